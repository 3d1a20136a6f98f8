// Changes of a document that leave all other bytes as they are.
//
// With, WithText and WithCopy splice the text of a value into the text of the document. If the path
// has an entry, the bytes of its value are replaced. Otherwise the value is wrapped in a dictionary
// for each missing parent, and is added to the innermost parent that exists: after its last entry,
// in the layout of that entry, or as its only entry on a line of its own. Blanks are added where
// two tokens would otherwise run together. The result is then read like any other text and compared
// with the expected values and tail, which are computed without the text; if they differ, the
// change is rejected with kUnwritable. So a layout that the splice does not handle cannot damage a
// file. Without removes the bytes of all entries of a key and checks its result in the same way.
#include "pdfsettings/Document.h"

#include "document/ParsedValue.h"
#include "document/ScannedText.h"
#include "format/SettingPath.h"
#include "format/Tokens.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace pdfsettings {

namespace {

constexpr std::string_view kBlanks = "\t ";
constexpr std::string_view kLineEnds = "\r\n";
constexpr std::string_view kIndent = "  ";

bool IsOneOf(char byte, std::string_view bytes) noexcept {
    return bytes.find(byte) != std::string_view::npos;
}

// The last line end before offset, else the first one of the text; LF if it has none.
std::string LineEndBefore(std::string const& text, std::size_t offset) {
    std::size_t end = text.find_last_of(kLineEnds, offset);
    if (end != std::string::npos && end > 0 && text.compare(end - 1, 2, "\r\n") == 0) {
        --end;
    }
    return std::string(format::FirstLineEnd(end == std::string::npos ? text : text.substr(end, 2)));
}

// The start of the run of blanks that ends at offset.
std::size_t BeforeBlanks(std::string const& text, std::size_t offset, std::string_view blanks) {
    while (offset > 0 && IsOneOf(text[offset - 1], blanks)) {
        --offset;
    }
    return offset;
}

bool IsLineStart(std::string const& text, std::size_t offset) {
    return offset == 0 || IsOneOf(text[offset - 1], kLineEnds);
}

// The end of the line of offset, if only blanks and a comment follow offset on it.
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

// Whether value would be read otherwise with next directly after it. The token of a number
// continues up to a blank or a bracket, and a "." in it makes an integer a real number.
bool RunsOn(std::string_view value, char next) {
    bool const isWord = detail::IsNameByte(value.back());
    bool const isWhole = isWord && value.front() != '/' && value.find('.') == value.npos;
    bool const isApart = format::kBlanks.Has(next) || next == '>' || next == ']';
    return isWord && !isApart && (isWhole || detail::IsNameByte(next));
}

// Replaces span by value, with a blank after it where they would run together.
std::string Spliced(std::string const& text, Span span, std::string const& value) {
    char const next = span.end < text.size() ? text[span.end] : ' ';
    bool const needsBlank = !value.empty() && RunsOn(value, next);
    return text.substr(0, span.begin) + value + (needsBlank ? " " : "") + text.substr(span.end);
}

// Replaces span by value, with blanks on both sides where needed.
std::string Replaced(std::string const& text, Span span, std::string_view value) {
    char const before = text[span.begin - 1];
    bool const needsBlank = detail::IsNameByte(before) && detail::IsNameByte(value.front());
    return Spliced(text, span, (needsBlank ? " " : "") + std::string(value));
}

// The end of a value including the bytes that belong to it but are not read as part of it: of "1,5"
// only the 1 is read.
std::size_t EndWithLeftover(Document const& document, DocumentEntry const& entry) {
    std::string const& text = document.Text();
    std::size_t const begin = entry.value.begin;
    auto const beginOf = [](Finding const& finding) { return finding.Bytes()->begin; };
    std::size_t end = entry.value.end;
    auto const& findings = document.Findings();
    auto found = std::ranges::lower_bound(findings, begin, {}, beginOf);
    for (; found != findings.end() && beginOf(*found) == begin; ++found) {
        end = std::max(end, found->Bytes()->end);
        while (found->Id() == "no-number" && end < text.size() && detail::IsNameByte(text[end])) {
            ++end;
        }
    }
    bool const isLast = entry.next == document.Entries().size();
    DocumentEntry const* const next = isLast ? nullptr : &document.Entries()[entry.next];
    std::size_t const limit = next == nullptr ? end : std::max(next->key.begin, entry.value.end);
    return std::min(end, limit);
}

// A dictionary or array of a document: the span between its brackets, and its entries.
struct Parent {
    Span fBody;
    std::size_t fFirst; // index of the first entry
    std::size_t fEnd;   // index after the last entry
    std::size_t fDepth; // of the entries
    bool fIsArray;
};

// REQUIRES: path is that of a dictionary or array, or it is empty and the document has settings.
Parent FindParent(Document const& document, std::string_view path) {
    if (path.empty()) {
        return {*document.Body(), 0, document.Entries().size(), 0, false};
    }
    DocumentEntry const& entry = *document.Find(path);
    bool const isArray = document.Text()[entry.value.begin] == '[';
    std::size_t const bracket = isArray ? 1 : 2;
    auto const place = static_cast<std::size_t>(&entry - document.Entries().data());
    Span const inside{entry.value.begin + bracket, entry.value.end - bracket};
    return {inside, place + 1, entry.next, entry.depth + 1, isArray};
}

// The last entry of a dictionary or array; null if it is empty.
DocumentEntry const* LastEntry(Document const& document, Parent const& parent) {
    DocumentEntry const* last = nullptr;
    for (std::size_t i = parent.fFirst; i < parent.fEnd; i = document.Entries()[i].next) {
        last = &document.Entries()[i];
    }
    return last;
}

// The text with entry after last, on its own line if last has its own line.
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

// The text with entry as the only entry of a dictionary.
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

// The text with value as a new last element of an array.
std::string
InsertElement(Document const& document, Parent const& parent, std::string const& value) {
    DocumentEntry const* const last = LastEntry(document, parent);
    std::size_t const place = last == nullptr ? parent.fBody.begin : last->value.end;
    return Spliced(document.Text(), {place, place}, " " + value);
}

// The span to remove with an entry: its whole line if nothing else is on it, else the entry and the
// blanks on one side.
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

// The text without spans, which are sorted. Tokens around a removed span do not run together.
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

// The spans of all entries of a path. Entries that only blanks separate share one span.
std::vector<Span> SpansOf(Document const& document, std::string_view path) {
    DocumentEntry const& found = *document.Find(path);
    if (found.key.Size() == 0) {
        return {{found.value.begin, EndWithLeftover(document, found)}};
    }
    std::vector<Span> spans;
    Parent const parent = FindParent(document, format::ParentPath(path));
    for (std::size_t i = parent.fFirst; i < parent.fEnd; i = document.Entries()[i].next) {
        DocumentEntry const& entry = document.Entries()[i];
        if (document.KeyOf(entry) != format::LastPart(path)) {
            continue;
        }
        std::size_t const before = BeforeBlanks(document.Text(), entry.key.begin, kBlanks);
        std::size_t const end = EndWithLeftover(document, entry);
        if (!spans.empty() && spans.back().end == before) {
            spans.back().end = end;
        } else {
            spans.push_back({entry.key.begin, end});
        }
    }
    return spans;
}

// Removes blanks from settings without entries, which must have nothing between their brackets;
// comments move before the brackets. before: the body before removed bytes of it were removed.
void EmptyBody(std::string& text, Span before, std::size_t removed) {
    std::size_t const size = before.Size() - std::min(removed, before.Size());
    std::string rest = text.substr(before.begin, size);
    std::size_t const first = std::min(rest.find_first_not_of("\t\n\r "), rest.size());
    std::size_t const open = before.begin - 2;
    bool const areComments = first < rest.size() && rest[first] == '%';
    if (areComments && rest.find("<<") == std::string::npos) {
        rest.erase(0, first);
        text.replace(
            open, 2 + size, rest + (rest.find_last_of("\r\n") == rest.npos ? "\n" : "") + "<<");
    } else if (first == rest.size()) {
        text.erase(before.begin, size);
    }
}

// The document, with settings added to it if it has none. Throws Error: kSyntax for a text that is
// refused, kUnwritable.
Document WithBody(Document const& document) {
    document.RequireRead();
    if (document.Body()) {
        return document;
    }
    std::string text = document.Text();
    text += text.empty() || text.ends_with('\n') ? "" : "\n";
    Document const made(text + "<<\n>> setalembicorparams\n");
    if (!made.Body()) {
        throw Error(
            Fault::kUnwritable, "the text begins with a zero byte, and nothing behind it is read");
    }
    return made;
}

// The text with value at path; missing parents are created. REQUIRES: the document has settings,
// and Dictionary::Set accepts the path.
std::string TextWith(Document const& document, std::string_view path, std::string value) {
    if (DocumentEntry const* const present = document.Find(path)) {
        Span const span{present->value.begin, EndWithLeftover(document, *present)};
        return Replaced(document.Text(), span, value);
    }
    std::string_view parentPath = format::ParentPath(path);
    while (!parentPath.empty() && document.Find(parentPath) == nullptr) {
        value.insert(0, "<< /" + std::string(format::LastPart(path)) + " ").append(" >>");
        path = parentPath;
        parentPath = format::ParentPath(path);
    }
    Parent const parent = FindParent(document, parentPath);
    if (parent.fIsArray) {
        return InsertElement(document, parent, value);
    }
    std::string const entry = "/" + std::string(format::LastPart(path)) + " " + value;
    DocumentEntry const* const last = LastEntry(document, parent);
    return last == nullptr ? InsertAlone(document, parent, entry)
                           : InsertBehind(document, *last, entry);
}

// A file has a slash before each key, which is no part of a path.
[[noreturn]] void ThrowBadKey(std::string_view path, std::string_view last) {
    bool const isSlashed = last.size() > 1 && last.front() == '/';
    std::string hint = "a key is up to 255 bytes without blanks and brackets";
    if (isSlashed) {
        hint = "write " + std::string(path.substr(0, path.size() - last.size())) +
               std::string(last.substr(1)) + " without the slash";
    }
    throw Error(Fault::kKey, std::string(path) + ": this cannot be the key of a setting; " + hint);
}

bool IsKey(std::string_view part) {
    return part.size() <= format::kMaxNameSize &&
           std::ranges::all_of(part, [](char byte) { return detail::IsNameByte(byte); });
}

// Throws Error (kKey) if a new key in path cannot be written, or has a special meaning in a file.
void RequireKeys(Document const& document, std::string_view path) {
    if (path == format::kTailKey) {
        throw Error(
            Fault::kKey,
            std::string(path) + ": this is what follows the settings in their file, not a setting");
    }
    std::size_t end = 0;
    do {
        std::size_t const begin = end == 0 ? 0 : end + 1;
        std::string_view const part = format::FirstPart(path.substr(begin));
        end = begin + part.size();
        bool const isNew = document.Find(path.substr(0, end)) == nullptr;
        if (isNew && (part.empty() || !IsKey(part))) {
            ThrowBadKey(path.substr(0, end), part);
        }
    } while (end < path.size());
}

// The document of text. Throws Error (kUnwritable) if it does not have exactly these values and
// this tail.
Document Require(
    std::string text,
    Dictionary const& values,
    std::string const& tail,
    std::string_view path,
    std::string const& reason) {
    Document changed(std::move(text));
    bool const isRead = changed.WhyRefused() == Refusal::kNone;
    if (!isRead || !(changed.Values() == values) || changed.Tail() != tail) {
        throw Error(Fault::kUnwritable, std::string(path) + ": " + reason);
    }
    return changed;
}

constexpr char const* kEmptyLast = "this change cannot be made in the text so that it reads back; "
                                   "an empty dictionary must be the last value";

// A document with text as the value at path. Throws as Document::With.
Document WithValueText(
    Document const& original,
    std::string_view path,
    Value const& value,
    std::string text,
    std::string const& reason) {
    Document const document = WithBody(original);
    RequireKeys(document, path);
    Dictionary values = document.Values();
    values.Set(path, value);
    return Require(
        TextWith(document, path, std::move(text)), values, document.Tail(), path, reason);
}

} // namespace

Document Document::With(std::string_view path, Value const& value) const {
    std::string const text = value.Text();
    try {
        return WithValueText(*this, path, value, text, kEmptyLast);
    } catch (Error const& error) {
        if (error.Code() != Fault::kUnwritable || detail::HasForm(value, text)) {
            throw;
        }
    }
    throw Error(Fault::kUnwritable, std::string(path) + ": " + detail::NoFormMessage(text));
}

Document Document::WithText(std::string_view path, std::string_view text) const {
    auto [value, bare] = detail::ParseValue(text);
    return WithValueText(*this, path, value, std::move(bare), kEmptyLast);
}

Document Document::WithCopy(std::string_view path, Document const& from) const {
    Value const& value = from.At(path);
    Span const span = from.Find(path)->value;
    return WithValueText(
        *this, path, value, from.Text().substr(span.begin, span.Size()), kEmptyLast);
}

Document Document::Without(std::string_view path) const {
    RequireRead();
    At(path);
    Dictionary values = Values();
    values.Remove(path);
    // All entries of the key are removed: otherwise an earlier one would become effective.
    std::string text = Removed(Text(), SpansOf(*this, path));
    if (values.empty()) {
        EmptyBody(text, *Body(), Text().size() - text.size());
    }
    return Require(
        std::move(text),
        values,
        Tail(),
        path,
        "this change cannot be made in the text so that it reads back; no dictionary may be left "
        "empty: remove it as a whole");
}

} // namespace pdfsettings
