#include "tools/joboptions/text/Comparison.h"

#include "tools/joboptions/commands/Output.h"
#include "tools/joboptions/text/Utf8.h"
#include "tools/joboptions/text/ValueText.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace joboptions {

namespace {

constexpr std::size_t kLeast = 12; // cells of a column
constexpr std::size_t kGap = 2;

// Adds a word in lines of its own.
void AppendParts(std::vector<std::string>& lines, std::string_view word, std::size_t width) {
    while (!word.empty()) {
        std::string_view const part = FittingPart(word, width);
        if (!lines.back().empty()) {
            lines.emplace_back();
        }
        lines.back() = part;
        word.remove_prefix(part.size());
    }
}

// The text of a cell in lines of at most width cells, broken at blanks where there are any.
std::vector<std::string> CellLines(std::string_view text, std::size_t width) {
    std::vector<std::string> lines(1);
    while (!text.empty()) {
        std::string_view const word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(word.size() + 1, text.size()));
        if (!lines.back().empty() && DisplayWidth(lines.back()) + 1 + DisplayWidth(word) <= width) {
            lines.back().append(" ").append(word);
            continue;
        }
        AppendParts(lines, word, width);
    }
    return lines;
}

std::string Cell(std::optional<pdfsettings::Value> const& value) {
    return value ? OneLine(*value) : "-";
}

class Grid {
public:
    Grid(ComparedSets const& sets, std::size_t width, bool color) : fSets(sets), fColor(color) {
        for (auto const& setting : sets.settings) {
            fKeyWidth = Widened(fKeyWidth, VisibleText(setting.path));
        }
        std::size_t const count = std::max<std::size_t>(sets.names.size(), 1);
        std::size_t const rest = width - std::min(width, fKeyWidth);
        fWidth = std::max(kLeast, rest / count - std::min(rest / count, kGap));
    }

    std::string Write() {
        std::vector<std::string> names;
        for (std::string const& name : fSets.names) {
            names.push_back(VisibleText(name));
        }
        WriteRow("", names);
        std::optional<std::string> group;
        for (auto const& setting : fSets.settings) {
            if (setting.group != group) {
                group = setting.group;
                fText += "\n" + VisibleText(group->empty() ? "Others" : *group) + "\n";
            }
            std::vector<std::string> cells;
            for (auto const& value : setting.values) {
                cells.push_back(Cell(value));
            }
            WriteRow(VisibleText(setting.path), cells);
        }
        return std::move(fText);
    }

private:
    void WriteRow(std::string const& key, std::vector<std::string> const& cells) {
        std::vector<std::vector<std::string>> columns;
        std::size_t height = 1;
        for (std::string const& cell : cells) {
            columns.push_back(CellLines(cell, fWidth));
            height = std::max(height, columns.back().size());
        }
        for (std::size_t line = 0; line < height; ++line) {
            std::string const shown = line == 0 ? key : "";
            std::string text =
                Colored(shown, kCyan, fColor && !shown.empty()) +
                std::string(fKeyWidth - std::min(fKeyWidth, DisplayWidth(shown)), ' ');
            for (auto const& lines : columns) {
                text +=
                    std::string(kGap, ' ') + Padded(line < lines.size() ? lines[line] : "", fWidth);
            }
            fText += text.substr(0, text.find_last_not_of(' ') + 1) + "\n";
        }
    }

    ComparedSets const& fSets;
    bool fColor;
    std::size_t fKeyWidth = 0;
    std::size_t fWidth = 0; // of each set
    std::string fText;
};

} // namespace

std::string ComparisonText(ComparedSets const& sets, std::size_t width, bool color) {
    return Grid(sets, width, color).Write();
}

} // namespace joboptions
