#include "pdfsettings/Repair.h"

#include "document/MakeSequence.h"
#include "format/SettingPath.h"
#include "format/Tokens.h"
#include "host/detail/Validation.h"

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

// Each attempt reads the whole text again. This limits the time for a text with very many mistakes.
constexpr std::size_t kMostBytesRead = std::size_t{4} << 20;

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

std::size_t CountFindings(Document const& document, std::string_view id) {
    return static_cast<std::size_t>(std::ranges::count_if(
        document.Findings(), [id](Finding const& finding) { return finding.Id() == id; }));
}

// The values that an invalid token may have been meant to be.
std::vector<std::string> ReadingsOfUnknown(std::string_view token) {
    std::string small(token);
    std::ranges::transform(small, small.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    std::vector<std::string> readings;
    if (small == "true" || small == "false") {
        readings.push_back(small);
    }
    if (IsLetter(token.front())) {
        readings.push_back("/" + std::string(token));
        readings.push_back("(" + std::string(token) + ")");
    }
    std::string_view const number = token.substr(token.front() == '+' ? 1 : 0);
    if (number.size() > 1 && number[0] == '.' && IsDigit(number[1])) {
        readings.push_back("0" + std::string(number));
    } else if (number.size() < token.size() && !number.empty() && IsDigit(number[0])) {
        readings.push_back(std::string(number));
    }
    return readings;
}

// A number with a comma in place of the point. A comma before three digits may separate thousands.
std::vector<std::string> ReadingsOfStuck(std::string_view token) {
    std::size_t const comma = token.find(',');
    if (comma == std::string_view::npos) {
        return {};
    }
    std::string_view const whole = token.substr(token.front() == '-' ? 1 : 0, comma);
    std::string_view const digits = whole.substr(0, whole.find(','));
    std::string_view const fraction = token.substr(comma + 1);
    bool const isNumber = !digits.empty() && std::ranges::all_of(digits, IsDigit) &&
                          !fraction.empty() && std::ranges::all_of(fraction, IsDigit);
    if (!isNumber || (fraction.size() == 3 && digits != "0")) {
        return {};
    }
    std::string reading(token);
    reading[comma] = '.';
    return {reading};
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
        if (fDocument.Text().starts_with(kMark8)) {
            Replace("encoding", {0, kMark8.size()}, "", "removed the byte order mark");
            return;
        }
        auto const text = FromUtf16(fDocument.Text());
        Document const converted(text.value_or(""));
        if (text && HasAsciiValues(converted)) {
            fDocument = converted;
            fOriginal = converted;
            Note("encoding", {0, 0}, "converted UTF-16 to UTF-8");
        }
    }

    // UTF-16 does not determine which bytes a non-ASCII character in a value should become.
    static bool HasAsciiValues(Document const& document) {
        return IsAscii(document.Text()) ||
               (document.WhyRefused() == Refusal::kNone && IsAscii(document.Tail()) &&
                std::ranges::all_of(document.Entries(), [&](DocumentEntry const& entry) {
                    return IsAscii(BytesOf(document, entry.key)) &&
                           IsAscii(BytesOf(document, entry.value));
                }));
    }

    // Repairs the first finding at from or later that can be repaired. Returns the offset after the
    // repair.
    std::optional<std::size_t> RepairNext(std::size_t from) {
        Findings const findings = fDocument.Findings();
        for (Finding const& finding : findings) {
            auto const next = finding.Bytes()->begin < from ? std::nullopt : RepairFinding(finding);
            if (next) {
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

    // If exactly one of readings is accepted, writes it in place of span. Returns the offset after
    // it.
    std::optional<std::size_t>
    UseOnly(std::vector<std::string> const& readings, Finding const& finding, Span span) {
        std::vector<std::string> accepted;
        std::ranges::copy_if(
            readings, std::back_inserter(accepted), [&](std::string const& reading) {
                Span const written{span.begin, span.begin + reading.size()};
                return IsAccepted(Replaced(span, reading), written, finding);
            });
        if (accepted.size() != 1) {
            return std::nullopt;
        }
        std::string const found(BytesOf(fDocument, span));
        Replace(finding.Id().c_str(), span, accepted[0], "wrote " + accepted[0] + " for " + found);
        return span.begin + accepted[0].size();
    }

    // Whether the schema accepts the new value in changed, and there is no finding about it.
    bool
    IsAccepted(std::optional<Document> const& changed, Span written, Finding const& finding) const {
        auto const found = changed ? EntryAt(*changed, written.begin) : std::nullopt;
        std::string const path = found ? found->fPath.Path() : "";
        if (!found || !HasRule(path, found->fEntry) ||
            (IsElement(found->fEntry) && finding.Id() == "stuck") ||
            CountFindings(*changed, "duplicate") > CountFindings(fDocument, "duplicate")) {
            return false;
        }
        std::size_t const end = std::max(found->fEntry.value.end, written.end);
        Document const part(changed->Text().substr(0, end) + found->fPath.Closers());
        auto const isInIt = [&](Finding const& other) {
            return other.Bytes()->begin >= written.begin;
        };
        auto const isAboutIt = [&](Finding const& other) { return other.Path() == path; };
        return part.WhyRefused() == Refusal::kNone &&
               std::ranges::none_of(part.Findings(), isInIt) &&
               std::ranges::none_of(detail::Validate(part, fSchema), isAboutIt);
    }

    bool HasRule(std::string_view path, DocumentEntry const& entry) const {
        return fSchema.Find(path) != nullptr ||
               (IsElement(entry) && fSchema.Find(format::ParentPath(path)) != nullptr);
    }

    // Completes a text that ends after complete settings: adds the end, or the missing part of it.
    void RepairEnd() {
        bool const isBalanced = CountFindings(fDocument, "keyword") > 0;
        if (!isBalanced && CountFindings(fDocument, "unclosed") == 0) {
            return;
        }
        std::size_t const end = WithoutBlanksBehind(fDocument.Text()).size();
        std::size_t const size = fDocument.Text().size();
        for (std::string const& missing : MissingEnds()) {
            auto const changed = Replaced({end, size}, missing);
            bool const isRead = changed && changed->WhyRefused() == Refusal::kNone;
            if (isRead && (isBalanced || IsLastNestedForSure(*changed))) {
                std::string_view const added = WithoutBlanksBehind(missing);
                std::string const text(added.substr(added.find_first_not_of(" \r\n")));
                char const* const id = isBalanced ? "keyword" : "unclosed";
                Replace(id, {end, size}, missing, "added " + text + " at the end");
                return;
            }
        }
    }

    // The ends that may be missing after the last byte that is not a blank. The last entry may be
    // cut short if nothing terminates it.
    std::vector<std::string> MissingEnds() const {
        std::string_view const text = fDocument.Text();
        std::string_view const cut = WithoutBlanksBehind(text);
        std::string const lineEnd = text.find("\r\n") == std::string_view::npos ? "\n" : "\r\n";
        std::string const keyword(format::kKeyword);
        std::vector<std::string> ends;
        bool const isWhole = cut.size() < text.size() || cut.ends_with('>') || cut.ends_with(')') ||
                             cut.ends_with(']');
        if (isWhole) {
            ends.push_back(lineEnd + ">> " + keyword + lineEnd);
        }
        if (cut.ends_with(">>")) {
            ends.push_back(" " + keyword + lineEnd);
        } else if (cut.ends_with('>')) {
            ends.push_back("> " + keyword + lineEnd);
        }
        std::size_t const word = cut.find_last_of("> \r\n") + 1;
        if (word < cut.size() && keyword.starts_with(cut.substr(word))) {
            ends.push_back(keyword.substr(cut.size() - word) + lineEnd);
        }
        return ends;
    }

    // Whether the entries nested in the last setting certainly belong to it, and not to the top
    // level.
    bool IsLastNestedForSure(Document const& document) const {
        auto const entries = document.Entries();
        auto const last = std::find_if(
            entries.rbegin(), entries.rend(), [](auto const& entry) { return entry.depth == 0; });
        auto const setting =
            static_cast<std::size_t>(last == entries.rend() ? 0 : entries.rend() - last - 1);
        EntryPath path(document);
        return std::ranges::all_of(entries.subspan(setting), [&](DocumentEntry const& entry) {
            path.Enter(entry);
            bool const isNestedKey = entry.depth > 0 && !IsElement(entry);
            return !isNestedKey ||
                   (!fSchema.IsUnknown(path.Path()) && fSchema.IsUnknown(document.KeyOf(entry)));
        });
    }

    // The document with text in place of span; nothing if too much has been read already.
    std::optional<Document> Replaced(Span span, std::string_view text) {
        std::string changed = fDocument.Text();
        changed.replace(span.begin, span.Size(), text);
        bool const isEnough = fRead > kMostBytesRead;
        fRead += changed.size();
        return isEnough ? std::nullopt : std::optional(Document(std::move(changed)));
    }

    void Replace(char const* id, Span span, std::string const& text, std::string message) {
        Note(id, span, std::move(message));
        std::string changed = fDocument.Text();
        changed.replace(span.begin, span.Size(), text);
        fDocument = Document(std::move(changed));
        fRemoved += span.Size();
        fAdded += text.size();
    }

    // All earlier repairs are before span.
    void Note(char const* id, Span span, std::string message) {
        Span const before{span.begin + fRemoved - fAdded, span.end + fRemoved - fAdded};
        fRepairs.push_back(
            detail::MakeFinding(fOriginal, Severity::kWarning, id, before, "", std::move(message)));
    }

    Document fOriginal;
    Document fDocument;
    Schema const& fSchema;
    std::size_t fRead = 0;
    std::size_t fRemoved = 0; // bytes removed so far, and bytes written in their place
    std::size_t fAdded = 0;
    std::vector<Finding> fRepairs;
};

} // namespace

RepairedDocument Repair(Document const& document, Schema const& schema) {
    return TextRepair(document, schema).Run();
}

} // namespace pdfsettings
