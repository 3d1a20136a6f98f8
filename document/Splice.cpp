// Changes of a document, which leave all other bytes as they are.
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

// Where a value ends together with what belongs to it though it is not read as a part of it: of
// "1,5" only the 1 is read.
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

// A dictionary or an array in a document: what stands between its brackets, and its entries.
struct Parent {
    Span fBody;
    std::size_t fFirst; // of its entries
    std::size_t fEnd;   // behind the last one
    std::size_t fDepth; // of them
    bool fIsArray;
};

// REQUIRES: the path leads to a dictionary or an array, or it is empty and there are settings.
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

// The last entry of a dictionary or an array; null for an empty one.
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

// The text with another element at the end of an array.
std::string
InsertElement(Document const& document, Parent const& parent, std::string const& value) {
    DocumentEntry const* const last = LastEntry(document, parent);
    std::size_t const place = last == nullptr ? parent.fBody.begin : last->value.end;
    return Spliced(document.Text(), {place, place}, " " + value);
}

// What is removed with span: its line when nothing else stands there, else the blanks behind it.
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

// Settings without an entry must have nothing between their brackets: comments move before them.
// before: the body when it was so many bytes longer.
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

// A document that is read and has settings. Throws Error (kSyntax).
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
            Fault::kUnwritable, "a zero byte begins the text, and nothing behind it is read");
    }
    return made;
}

// The text with a value at a path, whose parents are made where they are missing.
// REQUIRES: the document has settings, and the path is one that Dictionary::Set takes.
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

// In a file a slash stands before each key, which in a path is none of it.
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

// Throws Error (kKey) for a path whose new keys have no form in a file, or a meaning of their
// own there.
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

// The document of text. Throws Error (kUnwritable) where it does not hold those settings.
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
                                   "an empty dictionary can only stand "
                                   "last";

// Whether a value in that form can stand anywhere.
bool HasForm(Value const& value, std::string const& text) {
    Document const alone("<< /K " + text + "\n>> setalembicorparams\n");
    return alone.Values() == Dictionary::Of({{"K", value}});
}

// A document with a value at a path in that form. Throws as Document::With.
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
    constexpr std::size_t kMostShown = 100;
    std::string const text = value.Text();
    try {
        return WithValueText(*this, path, value, text, kEmptyLast);
    } catch (Error const& error) {
        if (error.Code() != Fault::kUnwritable || HasForm(value, text)) {
            throw;
        }
    }
    throw Error(
        Fault::kUnwritable,
        std::string(path) + ": " + text.substr(0, kMostShown) +
            (text.size() > kMostShown ? "..." : "") +
            " cannot stand in a settings file so that it reads back as the same");
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
    // An earlier entry of the same key would count from now on.
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
        "empty: remove the whole of it");
}

} // namespace pdfsettings
