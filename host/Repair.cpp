#include "pdfsettings/Repair.h"

#include "document/MakeSequence.h"
#include "format/SettingPath.h"
#include "format/Tokens.h"
#include "host/detail/Validation.h"
#include "pdfsettings/Compare.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utf8.h>
#include <utility>
#include <vector>

namespace pdfsettings {

namespace {

// Each attempt reads the text again. This limits the time for a text with very many mistakes.
constexpr std::size_t kMostBytesRead = std::size_t{1} << 20;

// Longer paths are cut short in messages, so that nothing can be said about their values.
constexpr std::size_t kLongestPath = 1000;

constexpr std::string_view kMark8 = "\xEF\xBB\xBF";

bool IsDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

bool IsLetter(char c) noexcept {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool IsAscii(std::string_view text) noexcept {
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string_view WithoutBlanksBehind(std::string_view text) noexcept {
    while (!text.empty() && format::kBlanks.Has(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

std::string_view BytesOf(Document const& document, Span span) {
    return std::string_view(document.Text()).substr(span.begin, span.Size());
}

// The text of bytes in UTF-16, converted to UTF-8; nothing if the first two bytes do not look like
// UTF-16.
std::optional<std::string> FromUtf16(std::string_view bytes) {
    bool const isMarked = bytes.starts_with("\xFE\xFF") || bytes.starts_with("\xFF\xFE");
    bool const isWide = bytes.size() > 1 && (bytes[0] == '\0') != (bytes[1] == '\0');
    if ((!isMarked && !isWide) || bytes.size() % 2 != 0) {
        return std::nullopt;
    }
    bool const isBigEndian = isMarked ? bytes.front() == '\xFE' : bytes.front() == '\0';
    std::u16string units;
    for (std::size_t i = isMarked ? 2 : 0; i < bytes.size(); i += 2) {
        auto const high = static_cast<unsigned char>(bytes[i + (isBigEndian ? 0 : 1)]);
        auto const low = static_cast<unsigned char>(bytes[i + (isBigEndian ? 1 : 0)]);
        units.push_back(static_cast<char16_t>(high << 8U | low));
    }
    std::string text;
    try {
        utf8::utf16to8(units.begin(), units.end(), std::back_inserter(text));
    } catch (utf8::exception const&) {
        return std::nullopt;
    }
    return text;
}

bool IsElement(DocumentEntry const& entry) noexcept {
    return entry.key.Size() == 0;
}

// The path of an entry. Enter is called for all entries in order, starting at any setting.
class EntryPath {
public:
    explicit EntryPath(Document const& document) : fDocument(document) {}

    void Enter(DocumentEntry const& entry) {
        fLevels.resize(entry.depth + 1);
        std::size_t& count = fLevels.back().fCount;
        bool const isElement = IsElement(entry);
        fLevels.push_back(
            {isElement ? std::to_string(count++) : fDocument.KeyOf(entry), 0, isElement});
    }

    std::string Path() const {
        std::string path = fLevels[1].fPart;
        for (std::size_t i = 2; i < fLevels.size(); ++i) {
            path += "/" + fLevels[i].fPart;
        }
        return path;
    }

    // The closing brackets of everything that is open after the entry, and the end of the settings.
    std::string Closers() const {
        std::string closers;
        for (std::size_t i = fLevels.size() - 1; i > 1; --i) {
            closers += fLevels[i].fIsElement ? " ]" : " >>";
        }
        return closers + "\n>> setalembicorparams";
    }

private:
    struct Level {
        std::string fPart;
        std::size_t fCount = 0; // of elements so far
        bool fIsElement = false;
    };

    Document const& fDocument;
    std::vector<Level> fLevels{1};
};

struct FoundEntry {
    DocumentEntry fEntry;
    EntryPath fPath;
};

// The entry whose key or value begins at offset.
std::optional<FoundEntry> EntryAt(Document const& document, std::size_t offset) {
    EntryPath path(document);
    for (DocumentEntry const& entry : document.Entries()) {
        path.Enter(entry);
        bool const hasKeyThere = !IsElement(entry) && entry.key.begin == offset;
        if (entry.value.begin == offset || hasKeyThere) {
            return FoundEntry{entry, std::move(path)};
        }
    }
    return std::nullopt;
}

// The values that an invalid token may have been meant to be. A string is among them only so that
// a name is not written where the schema accepts both: a string may go on behind a blank.
std::vector<std::string> ReadingsOfUnknown(std::string_view token) {
    constexpr std::string_view kWordBytes = "-._+0123456789"
                                            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    std::string small(token);
    std::ranges::transform(small, small.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    if (small == "true" || small == "false") {
        return {small};
    }
    bool const isWord = token.find_first_not_of(kWordBytes) == std::string_view::npos;
    if (IsLetter(token.front()) && isWord && small != "null") {
        return {"/" + std::string(token), "(" + std::string(token) + ")"};
    }
    std::string_view const number = token.substr(token.front() == '+' ? 1 : 0);
    std::size_t const point = std::min(number.find('.'), number.size());
    std::string_view const whole = number.substr(0, point);
    bool const isDecimal =
        std::ranges::all_of(whole, IsDigit) && (whole.size() < 2 || whole.front() != '0') &&
        std::ranges::all_of(number.substr(std::min(point + 1, number.size())), IsDigit) &&
        number.find_first_of("0123456789") != std::string_view::npos;
    return isDecimal ? std::vector{(whole.empty() ? "0" : "") + std::string(number)}
                     : std::vector<std::string>();
}

// A number with a comma in place of the point. A comma before three digits may separate thousands,
// and a leading 0 makes a number octal.
std::vector<std::string> ReadingsOfStuck(std::string_view token) {
    std::string_view const number = token.substr(token.front() == '-' ? 1 : 0);
    std::size_t const comma = std::min(number.find(','), number.size());
    std::string_view const whole = number.substr(0, comma);
    std::string_view const fraction = number.substr(std::min(comma + 1, number.size()));
    bool const isNumber = !whole.empty() && std::ranges::all_of(whole, IsDigit) &&
                          !fraction.empty() && std::ranges::all_of(fraction, IsDigit);
    bool const isClear = whole == "0" || (fraction.size() != 3 && whole.front() != '0');
    if (!isNumber || !isClear) {
        return {};
    }
    std::string reading(token);
    reading[token.find(',')] = '.';
    return {reading};
}

// Whether the text behind a finding that is not repaired is read as it looks.
bool IsHarmless(Finding const& finding) {
    constexpr std::string_view kHarmless[] = {
        "bad-hex", "duplicate", "nesting", "no-number", "octal", "rounded", "stuck"};
    return std::ranges::find(kHarmless, finding.Id()) != std::end(kHarmless);
}

Finding const* ErrorOf(Document const& document) {
    auto const& findings = document.Findings();
    auto const error = std::ranges::find(findings, Severity::kError, &Finding::Level);
    return error == findings.end() ? nullptr : &*error;
}

class TextRepair {
public:
    TextRepair(Document const& document, Schema const& schema)
        : fOriginal(document),
          fDocument(document),
          fSchema(schema) {}

    RepairedDocument Run() {
        RepairEncoding();
        std::size_t from = 0;
        while (auto const next = RepairNext(from)) {
            from = *next;
        }
        RepairEnd();
        return {fDocument, detail::MakeSequence::From(std::move(fRepairs))};
    }

private:
    void RepairEncoding() {
        bool const hasMark = fDocument.Text().starts_with(kMark8);
        auto const text = hasMark ? std::optional(fDocument.Text().substr(kMark8.size()))
                                  : FromUtf16(fDocument.Text());
        if (!text || text->empty() || text->starts_with(kMark8) ||
            text->find('\0') != std::string::npos) {
            return;
        }
        if (hasMark) {
            Replace("encoding", {0, kMark8.size()}, "", "removed the byte order mark");
            return;
        }
        Document const converted(*text);
        if (HasAsciiValues(converted)) {
            fDocument = converted;
            fOriginal = converted;
            Note("encoding", {0, 0}, "converted UTF-16 to UTF-8");
        }
    }

    // UTF-16 does not determine which bytes a non-ASCII character in a value should become.
    static bool HasAsciiValues(Document const& document) {
        if (IsAscii(document.Text())) {
            return true;
        }
        auto const entries = document.Entries();
        for (std::size_t i = 0; i < entries.size(); ++i) {
            bool const isCollection = entries[i].next > i + 1; // its entries are tested themselves
            if (!IsAscii(BytesOf(document, entries[i].key)) ||
                (!isCollection && !IsAscii(BytesOf(document, entries[i].value)))) {
                return false;
            }
        }
        return document.WhyRefused() == Refusal::kNone && IsAscii(document.Tail());
    }

    // Repairs the first finding at or after from that can be repaired, and returns the offset after
    // the new text. Stops where the scanner may be out of sync with what was meant.
    std::optional<std::size_t> RepairNext(std::size_t from) {
        Findings const findings = fDocument.Findings();
        for (Finding const& finding : findings) {
            if (finding.Bytes()->begin < from) {
                continue;
            }
            auto const next = RepairFinding(finding);
            if (next || !IsHarmless(finding)) {
                return next;
            }
        }
        return std::nullopt;
    }

    std::optional<std::size_t> RepairFinding(Finding const& finding) {
        Span const span = *finding.Bytes();
        std::string_view const found = BytesOf(fDocument, span);
        if (finding.Id() == "stray") {
            std::string_view const key = found.substr(0, found.find_first_of(" \t\r\n"));
            return UseOnly(
                {"/" + std::string(key)}, finding, {span.begin, span.begin + key.size()});
        }
        if (finding.Id() == "unknown-value" && !found.empty()) {
            return UseOnly(ReadingsOfUnknown(found), finding, span);
        }
        if (finding.Id() == "stuck" && !found.empty()) {
            return UseOnly(ReadingsOfStuck(found), finding, span);
        }
        return std::nullopt;
    }

    // Replaces span with the reading that is accepted, if it is the only one and not a string, and
    // returns the offset after it.
    std::optional<std::size_t>
    UseOnly(std::vector<std::string> const& readings, Finding const& finding, Span span) {
        std::vector<std::string> accepted;
        std::ranges::copy_if(
            readings, std::back_inserter(accepted), [&](std::string const& reading) {
                auto const changed = Replaced(span, reading);
                Span const written{span.begin, span.begin + reading.size()};
                return changed && IsAccepted(*changed, written, finding);
            });
        if (accepted.size() != 1 || accepted[0].starts_with('(')) {
            return std::nullopt;
        }
        std::string const found(BytesOf(fDocument, span));
        Replace(finding.Id().c_str(), span, accepted[0], "wrote " + accepted[0] + " for " + found);
        return span.begin + accepted[0].size();
    }

    // Whether the schema accepts what was written, and nothing else of the text changes.
    bool IsAccepted(Document const& changed, Span written, Finding const& finding) const {
        auto const found = EntryAt(changed, written.begin);
        if (!found || (IsElement(found->fEntry) && finding.Id() == "stuck")) {
            return false;
        }
        std::string const path = found->fPath.Path();
        return IsPlain(path) && HasRule(path, found->fEntry) &&
               IsClean(changed, written, found->fEntry) && KeepsOthers(changed, path, finding) &&
               IsValid(changed, *found, path);
    }

    // Whether messages name a path as it is.
    static bool IsPlain(std::string_view path) {
        return path.size() <= kLongestPath &&
               std::ranges::all_of(path, [](char c) { return c > ' ' && c <= '~'; });
    }

    bool HasRule(std::string_view path, DocumentEntry const& entry) const {
        return fSchema.Find(path) != nullptr ||
               (IsElement(entry) && fSchema.Find(format::ParentPath(path)) != nullptr);
    }

    // Whether there is no finding in the entry and in its line behind it, and no error before.
    static bool IsClean(Document const& changed, Span written, DocumentEntry const& entry) {
        std::string_view const text = changed.Text();
        std::size_t const end = std::max(entry.value.end, written.end);
        std::size_t const next =
            IsElement(entry) ? end : std::min(text.find_first_of("/>\r\n", end), text.size());
        return std::ranges::none_of(changed.Findings(), [&](Finding const& other) {
            std::size_t const begin = other.Bytes()->begin;
            bool const isIn = begin >= written.begin && begin < next;
            return isIn || (begin < written.begin && other.Level() == Severity::kError);
        });
    }

    // Whether all other settings are read as before, as far as they were read at all.
    bool
    KeepsOthers(Document const& changed, std::string const& path, Finding const& finding) const {
        if (finding.Id() == "stray" && fDocument.Find(path) != nullptr) {
            return false;
        }
        if (fDocument.WhyRefused() != Refusal::kNone) {
            return true;
        }
        return changed.WhyRefused() == Refusal::kNone &&
               std::ranges::all_of(Compare(fDocument, changed), [&](Difference const& difference) {
                   return IsIn(difference.path, path);
               });
    }

    static bool IsIn(std::string_view path, std::string_view parent) {
        return path == parent ||
               (path.starts_with(parent) && path.substr(parent.size()).starts_with('/'));
    }

    // Whether the schema accepts the entry. Nothing behind it counts, which may not be readable.
    bool IsValid(Document const& changed, FoundEntry const& found, std::string const& path) const {
        Document const part(
            changed.Text().substr(0, found.fEntry.value.end) + found.fPath.Closers());
        return part.WhyRefused() == Refusal::kNone &&
               std::ranges::none_of(detail::Validate(part, fSchema), [&](Finding const& other) {
                   return IsIn(other.Path(), path);
               });
    }

    // The keyword behind the settings, or a part of it and of the ">>" before it, is missing at the
    // end of the text. Where there is no ">", settings may be missing too.
    void RepairEnd() {
        Finding const* const error = ErrorOf(fDocument);
        std::string const& text = fDocument.Text();
        std::size_t const end = WithoutBlanksBehind(text).size();
        if (error == nullptr || (error->Id() != "keyword" && error->Id() != "unclosed")) {
            return;
        }
        std::string const missing = MissingEnd(std::string_view(text).substr(0, end));
        bool const isEnded = text.find_first_of("\r\n", end) != std::string::npos;
        std::string const added =
            missing + (isEnded ? "" : std::string(format::FirstLineEnd(text)));
        auto const changed = missing.empty() ? std::nullopt : Replaced({end, end}, added);
        if (changed && changed->WhyRefused() == Refusal::kNone &&
            changed->Findings().size() < fDocument.Findings().size()) {
            std::string const shown = missing.substr(missing.find_first_not_of(' '));
            Replace(error->Id().c_str(), {end, end}, added, "added " + shown + " at the end");
        }
    }

    static std::string MissingEnd(std::string_view text) {
        std::string const keyword(format::kKeyword);
        std::size_t const word = text.find_last_of("> \t\r\n") + 1;
        if (text.ends_with('>')) {
            return (text.ends_with(">>") ? " " : "> ") + keyword;
        }
        return word < text.size() && keyword.starts_with(text.substr(word))
                   ? keyword.substr(text.size() - word)
                   : "";
    }

    // The document with text in place of span; nothing after too many attempts.
    std::optional<Document> Replaced(Span span, std::string_view text) {
        if (fRead > kMostBytesRead) {
            return std::nullopt;
        }
        std::string changed = fDocument.Text();
        changed.replace(span.begin, span.Size(), text);
        fRead += changed.size();
        return Document(std::move(changed));
    }

    void Replace(char const* id, Span span, std::string const& text, std::string message) {
        Note(id, span, std::move(message));
        std::string changed = fDocument.Text();
        changed.replace(span.begin, span.Size(), text);
        fDocument = Document(std::move(changed));
        fRemoved += span.Size();
        fAdded += text.size();
    }

    // REQUIRES: all earlier changes are to the left of span.
    void Note(char const* id, Span span, std::string message) {
        Span const before{span.begin + fRemoved - fAdded, span.end + fRemoved - fAdded};
        fRepairs.push_back(
            detail::MakeFinding(fOriginal, Severity::kWarning, id, before, "", std::move(message)));
    }

    Document fOriginal;
    Document fDocument;
    Schema const& fSchema;
    std::size_t fRead = 0;
    std::size_t fRemoved = 0; // bytes that were replaced
    std::size_t fAdded = 0;   // bytes that replaced them
    std::vector<Finding> fRepairs;
};

} // namespace

RepairedDocument Repair(Document const& document, Schema const& schema) {
    return TextRepair(document, schema).Run();
}

} // namespace pdfsettings
