#include "tools/joboptions/text/LineDiff.h"

#include "tools/joboptions/commands/Output.h"
#include "tools/joboptions/text/Utf8.h"

#include <algorithm>
#include <fmt/format.h>
#include <set>
#include <span>
#include <unordered_map>
#include <vector>

namespace joboptions {

namespace {

using Lines = std::vector<std::string_view>;
using LineSpan = std::span<std::string_view const>;

std::string_view LineEndOf(std::string_view line) {
    return line.substr(line.find_last_not_of("\r\n") + 1);
}

// The lines of text with their ends, which are CR, LF or CR LF.
Lines SplitLines(std::string_view text) {
    Lines lines;
    while (!text.empty()) {
        std::size_t const end = std::min(text.find_first_of("\r\n"), text.size());
        bool const isPair = text.substr(end).starts_with("\r\n");
        std::size_t const next = std::min(end + (isPair ? 2U : 1U), text.size());
        lines.push_back(text.substr(0, next));
        text.remove_prefix(next);
    }
    return lines;
}

// A line that stays (' '), goes ('-') or comes ('+').
struct Edit {
    char fMark;
    std::string_view fLine;
};

// The table of the longest common subsequences of the ends of two lists of lines.
class CommonLines {
public:
    // Whether a table for so many lines takes little memory and time.
    static bool AreFew(std::size_t before, std::size_t after) {
        constexpr std::size_t kMost = 4'000'000;
        return before > 0 && after <= kMost / before;
    }

    CommonLines(LineSpan before, LineSpan after)
        : fWidth(after.size() + 1),
          fSizes((before.size() + 1) * fWidth) {
        std::vector<std::size_t> const left = NumbersOf(before);
        std::vector<std::size_t> const right = NumbersOf(after);
        for (std::size_t i = before.size(); i-- > 0;) {
            for (std::size_t j = after.size(); j-- > 0;) {
                fSizes[i * fWidth + j] = left[i] == right[j]
                                             ? Size(i + 1, j + 1) + 1
                                             : std::max(Size(i + 1, j), Size(i, j + 1));
            }
        }
    }

    // Of the lines from i in before and from j in after.
    unsigned Size(std::size_t i, std::size_t j) const { return fSizes[i * fWidth + j]; }

private:
    // Equal lines have equal numbers, so that long lines are compared once.
    std::vector<std::size_t> NumbersOf(LineSpan lines) {
        std::vector<std::size_t> numbers;
        for (std::string_view const line : lines) {
            numbers.push_back(fNumbers.try_emplace(line, fNumbers.size()).first->second);
        }
        return numbers;
    }

    std::unordered_map<std::string_view, std::size_t> fNumbers;
    std::size_t fWidth;
    std::vector<unsigned> fSizes;
};

// Appends the edits up to the end of one of two lists of lines, and removes these lines from both.
void AppendUpToAnEnd(std::vector<Edit>& edits, LineSpan& before, LineSpan& after) {
    CommonLines const common(before, after);
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < before.size() && j < after.size()) {
        if (before[i] == after[j]) {
            edits.push_back({' ', before[i++]});
            ++j;
        } else if (common.Size(i + 1, j) >= common.Size(i, j + 1)) {
            edits.push_back({'-', before[i++]});
        } else {
            edits.push_back({'+', after[j++]});
        }
    }
    before = before.subspan(i);
    after = after.subspan(j);
}

void AppendAll(std::vector<Edit>& edits, char mark, LineSpan lines) {
    for (std::string_view const line : lines) {
        edits.push_back({mark, line});
    }
}

std::vector<Edit> EditsBetween(Lines const& before, Lines const& after) {
    auto const first = std::ranges::mismatch(before, after);
    auto const begin = static_cast<std::size_t>(first.in1 - before.begin());
    std::size_t end = 0; // the number of common lines at the end
    while (end < std::min(before.size(), after.size()) - begin &&
           before[before.size() - 1 - end] == after[after.size() - 1 - end]) {
        ++end;
    }
    LineSpan left(before);
    LineSpan right(after);
    left = left.subspan(begin, left.size() - begin - end);
    right = right.subspan(begin, right.size() - begin - end);
    std::vector<Edit> edits;
    AppendAll(edits, ' ', LineSpan(before).first(begin));
    if (CommonLines::AreFew(left.size(), right.size())) {
        AppendUpToAnEnd(edits, left, right);
    }
    AppendAll(edits, '-', left);
    AppendAll(edits, '+', right);
    AppendAll(edits, ' ', LineSpan(before).last(end));
    return edits;
}

// Writes edits, leaving out lines that stay and are far from others.
class DiffWriter {
public:
    DiffWriter(std::vector<Edit> const& edits, bool showsEnds, bool color)
        : fEdits(edits),
          fShowsEnds(showsEnds),
          fColor(color) {}

    std::string Write() {
        std::size_t next = 0;
        while (next < fEdits.size()) {
            std::size_t const change = ChangeFrom(next);
            if (change == fEdits.size()) {
                break;
            }
            std::size_t const begin = std::max(next, change - std::min(change, kAround));
            CountLines(next, begin);
            next = EndOfHunk(change);
            WriteHunk(begin, next);
        }
        return std::move(fText);
    }

private:
    static constexpr std::size_t kAround = 3;

    std::size_t ChangeFrom(std::size_t place) const {
        while (place < fEdits.size() && fEdits[place].fMark == ' ') {
            ++place;
        }
        return place;
    }

    // Changes that are close to each other are in one hunk.
    std::size_t EndOfHunk(std::size_t change) const {
        std::size_t end = change;
        while (change < fEdits.size() && change - end <= 2 * kAround) {
            end = change + 1;
            change = ChangeFrom(end);
        }
        return std::min(end + kAround, fEdits.size());
    }

    void CountLines(std::size_t begin, std::size_t end) {
        for (; begin < end; ++begin) {
            fBefore += fEdits[begin].fMark != '+' ? 1U : 0U;
            fAfter += fEdits[begin].fMark != '-' ? 1U : 0U;
        }
    }

    void WriteHunk(std::size_t begin, std::size_t end) {
        std::size_t const before = fBefore;
        std::size_t const after = fAfter;
        CountLines(begin, end);
        std::string const head =
            fmt::format("@@ -{} +{} @@", RangeText(before, fBefore), RangeText(after, fAfter));
        fText += Colored(head, kCyan, fColor) + "\n";
        for (; begin < end; ++begin) {
            WriteEdit(fEdits[begin]);
        }
    }

    // The lines after the first begin ones, up to end: the number of the first, and how many.
    static std::string RangeText(std::size_t begin, std::size_t end) {
        return fmt::format("{},{}", begin == end ? begin : begin + 1, end - begin);
    }

    void WriteEdit(Edit const& edit) {
        std::string_view const end = LineEndOf(edit.fLine);
        std::string_view const shown = fShowsEnds && end.starts_with('\r') ? "\r" : "";
        std::string const line =
            edit.fMark +
            VisibleText(
                std::string(edit.fLine.substr(0, edit.fLine.size() - end.size())).append(shown));
        int const number = edit.fMark == '-' ? kRed : kGreen;
        fText += Colored(line, number, fColor && edit.fMark != ' ') + "\n";
        fText += end.empty() ? "\\ No line end at the end of the text\n" : "";
    }

    std::vector<Edit> const& fEdits;
    bool fShowsEnds;
    bool fColor;
    std::size_t fBefore = 0; // how many lines of each text have been passed
    std::size_t fAfter = 0;
    std::string fText;
};

std::set<std::string_view> LineEndsOf(Lines const& lines) {
    std::set<std::string_view> ends;
    for (std::string_view const line : lines) {
        ends.insert(LineEndOf(line));
    }
    ends.erase("");
    return ends;
}

} // namespace

std::string
LineDiff(std::string const& name, std::string_view before, std::string_view after, bool color) {
    if (before == after) {
        return "";
    }
    Lines const left = SplitLines(before);
    Lines const right = SplitLines(after);
    bool const showsEnds = LineEndsOf(left) != LineEndsOf(right);
    std::vector<Edit> const edits = EditsBetween(left, right);
    return fmt::format("--- {0}\n+++ {0}\n", name) + DiffWriter(edits, showsEnds, color).Write();
}

} // namespace joboptions
