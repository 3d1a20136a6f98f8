#include "pdfsettings/Splice.h"

#include "document/ScannedText.h"
#include "format/SettingPath.h"

#include <algorithm>
#include <vector>

namespace pdfsettings {

namespace {

constexpr std::string_view kBlanks = "\t ";
constexpr std::string_view kLineEnds = "\r\n";
constexpr std::string_view kIndent = "  ";

bool IsOneOf(char byte, std::string_view bytes) noexcept {
    return bytes.find(byte) != std::string_view::npos;
}

// The last line end before offset, else the first one of the text; LF for a text of one line.
std::string LineEndBefore(std::string const& text, std::size_t offset) {
    std::size_t end = text.find_last_of(kLineEnds, offset);
    if (end != std::string::npos && end > 0 && text.compare(end - 1, 2, "\r\n") == 0) {
        --end;
    }
    end = end != std::string::npos ? end : text.find_first_of(kLineEnds);
    if (end == std::string::npos) {
        return "\n";
    }
    return text.compare(end, 2, "\r\n") == 0 ? "\r\n" : text.substr(end, 1);
}

// The place behind blanks at the end of what stands before offset.
std::size_t BeforeBlanks(std::string const& text, std::size_t offset, std::string_view blanks) {
    while (offset > 0 && IsOneOf(text[offset - 1], blanks)) {
        --offset;
    }
    return offset;
}

bool IsLineStart(std::string const& text, std::size_t offset) {
    return offset == 0 || IsOneOf(text[offset - 1], kLineEnds);
}

// Where the line of offset ends, if nothing but blanks and a comment stands behind offset.
std::optional<std::size_t> RestOfLine(std::string const& text, std::size_t offset) {
    std::size_t const next = std::min(text.find_first_not_of(kBlanks, offset), text.size());
    std::size_t const end = std::min(text.find_first_of(kLineEnds, next), text.size());
    bool const isRest = next == end || text[next] == '%';
    return isRest ? std::optional(end) : std::nullopt;
}

std::size_t BehindLineEnd(std::string const& text, std::size_t offset) {
    if (offset < text.size()) {
        offset += text.compare(offset, 2, "\r\n") == 0 ? 2U : 1U;
    }
    return offset;
}

// Whether a value would be read otherwise with next behind it. A number's token goes on to a blank
// or an end, and a "." in it makes another number of a whole one.
bool RunsOn(std::string_view value, char next) {
    bool const isWord = detail::IsNameByte(value.back());
    bool const isWhole = isWord && value.front() != '/' && value.find('.') == value.npos;
    bool const isApart = format::kBlanks.Has(next) || next == '>' || next == ']';
    return isWord && !isApart && (isWhole || detail::IsNameByte(next));
}

// Puts value in the place of span, apart from what stands behind it.
std::string Spliced(std::string const& text, Span span, std::string const& value) {
    char const next = span.end < text.size() ? text[span.end] : ' ';
    bool const needsBlank = !value.empty() && RunsOn(value, next);
    return text.substr(0, span.begin) + value + (needsBlank ? " " : "") + text.substr(span.end);
}

// Puts value in the place of span, apart from what stands on both sides.
std::string Replaced(std::string const& text, Span span, std::string_view value) {
    char const before = text[span.begin - 1];
    bool const needsBlank = detail::IsNameByte(before) && detail::IsNameByte(value.front());
    return Spliced(text, span, (needsBlank ? " " : "") + std::string(value));
}

// A dictionary in a document: what stands between its brackets, and its entries.
struct Parent {
    Span fBody;
    std::size_t fFirst; // of its entries
    std::size_t fEnd;   // behind the last one
    std::size_t fDepth; // of them
};

std::optional<Parent> FindParent(Document const& document, std::string_view path) {
    auto const body = document.Body();
    if (path.empty()) {
        return body ? std::optional<Parent>({*body, 0, document.Entries().size(), 0})
                    : std::nullopt;
    }
    DocumentEntry const* const entry = document.Find(path);
    bool const isDictionary =
        entry != nullptr && document.Text().compare(entry->value.begin, 2, "<<") == 0;
    if (!body || !isDictionary) {
        return std::nullopt;
    }
    auto const place = static_cast<std::size_t>(entry - document.Entries().data());
    Span const inside{entry->value.begin + 2, entry->value.end - 2};
    return Parent{inside, place + 1, entry->next, entry->depth + 1};
}

// The last entry of a dictionary; null for an empty one.
DocumentEntry const* LastEntry(Document const& document, Parent const& parent) {
    DocumentEntry const* last = nullptr;
    for (std::size_t i = parent.fFirst; i < parent.fEnd; i = document.Entries()[i].next) {
        last = &document.Entries()[i];
    }
    return last;
}

// Behind an entry, on its own line where that one has a line of its own.
std::string InsertBehind(Document const& document, DocumentEntry const& last, std::string entry) {
    std::string const& text = document.Text();
    std::size_t const indent = BeforeBlanks(text, last.key.begin, kBlanks);
    auto const lineEnd = RestOfLine(text, last.value.end);
    if (!IsLineStart(text, indent) || !lineEnd) {
        return Spliced(text, {last.value.end, last.value.end}, " " + entry);
    }
    entry =
        LineEndBefore(text, last.key.begin) + text.substr(indent, last.key.begin - indent) + entry;
    return text.substr(0, *lineEnd) + entry + text.substr(*lineEnd);
}

// As the only entry of a dictionary.
std::string InsertAlone(Document const& document, Parent const& parent, std::string const& entry) {
    std::string const& text = document.Text();
    std::string const lineEnd = LineEndBefore(text, parent.fBody.begin);
    std::string indent;
    for (std::size_t depth = 0; depth < parent.fDepth; ++depth) {
        indent += kIndent;
    }
    std::string changed = text.substr(0, parent.fBody.begin);
    changed += lineEnd;
    changed += indent;
    changed += kIndent;
    changed += entry;
    std::size_t const rest = BeforeBlanks(text, parent.fBody.end, kBlanks);
    bool const hasLineEnd = rest > parent.fBody.begin && IsLineStart(text, rest);
    return changed + text.substr(parent.fBody.begin, parent.fBody.Size()) +
           (hasLineEnd ? "" : lineEnd + indent) + text.substr(parent.fBody.end);
}

// What to take out with span: its line when nothing else stands there, else the blanks behind it.
Span WithBlanks(std::string const& text, Span span) {
    std::size_t const indent = BeforeBlanks(text, span.begin, kBlanks);
    std::size_t const next = std::min(text.find_first_not_of(kBlanks, span.end), text.size());
    bool const isRest = next == text.size() || IsOneOf(text[next], kLineEnds);
    if (isRest && IsLineStart(text, indent)) {
        return {indent, BehindLineEnd(text, next)};
    }
    bool const hasBlankBefore = indent < span.begin;
    return isRest ? Span{indent, span.end} : Span{span.begin, hasBlankBefore ? next : span.end};
}

// The text without spans, which are in its order. What stood apart stays so.
std::string Removed(std::string const& text, std::vector<Span> const& spans) {
    std::string rest;
    std::size_t begin = 0;
    for (Span const& span : spans) {
        Span const whole = WithBlanks(text, span);
        rest += text.substr(begin, whole.begin - begin);
        begin = whole.end;
        bool const wouldJoin = begin < text.size() && !rest.empty() &&
                               detail::IsNameByte(rest.back()) && detail::IsNameByte(text[begin]);
        rest += wouldJoin ? " " : "";
    }
    return rest + text.substr(begin);
}

// The places of all entries of a path; those that only blanks part are one.
std::vector<Span> SpansOf(Document const& document, std::string_view path) {
    DocumentEntry const& found = *document.Find(path);
    if (found.key.Size() == 0) {
        return {found.value};
    }
    std::vector<Span> spans;
    auto const parent = FindParent(document, format::ParentPath(path));
    for (std::size_t i = parent->fFirst; i < parent->fEnd; i = document.Entries()[i].next) {
        DocumentEntry const& entry = document.Entries()[i];
        if (document.KeyOf(entry) != format::LastPart(path)) {
            continue;
        }
        std::size_t const before = BeforeBlanks(document.Text(), entry.key.begin, kBlanks);
        if (!spans.empty() && spans.back().end == before) {
            spans.back().end = entry.value.end;
        } else {
            spans.push_back({entry.key.begin, entry.value.end});
        }
    }
    return spans;
}

// Settings without an entry must have nothing between their brackets. before: the body when it was
// so many bytes longer.
void RemoveBlankBody(std::string& text, Span before, std::size_t removed) {
    std::size_t const size = before.Size() - std::min(removed, before.Size());
    auto const begin = text.begin() + static_cast<std::ptrdiff_t>(before.begin);
    auto const end = begin + static_cast<std::ptrdiff_t>(size);
    if (std::all_of(begin, end, [](char byte) { return format::kBlanks.Has(byte); })) {
        text.erase(begin, end);
    }
}

} // namespace

std::optional<std::string>
WithValue(Document const& document, std::string_view path, std::string_view value) {
    if (DocumentEntry const* const present = document.Find(path)) {
        return document.Body() ? std::optional(Replaced(document.Text(), present->value, value))
                               : std::nullopt;
    }
    auto const parent = FindParent(document, format::ParentPath(path));
    if (!parent) {
        return std::nullopt;
    }
    std::string const entry = "/" + std::string(format::LastPart(path)) + " " + std::string(value);
    DocumentEntry const* const last = LastEntry(document, *parent);
    return last == nullptr ? InsertAlone(document, *parent, entry)
                           : InsertBehind(document, *last, entry);
}

std::optional<std::string> Without(Document const& document, std::string_view path) {
    DocumentEntry const* const entry = document.Find(path);
    if (entry == nullptr || !document.Body()) {
        return std::nullopt;
    }
    // An earlier entry of the same key would count from now on.
    std::string text = Removed(document.Text(), SpansOf(document, path));
    RemoveBlankBody(text, *document.Body(), document.Text().size() - text.size());
    return text;
}

} // namespace pdfsettings
