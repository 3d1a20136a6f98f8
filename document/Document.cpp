#include "pdfsettings/Document.h"

#include "document/DocumentScanner.h"
#include "document/MakeSequence.h"
#include "document/Spelling.h"
#include "format/SettingPath.h"

#include <algorithm>
#include <exception>
#include <functional>
#include <mutex>
#include <pthread.h>
#include <span>
#include <tuple>
#include <utf8.h>
#include <utility>

namespace pdfsettings {

namespace {

bool IsElement(DocumentEntry const& entry) {
    return entry.key.Size() == 0;
}

// The key of an entry as the component reads it: without its slash, up to a zero byte. Empty for an
// element of an array.
std::string_view KeyIn(std::string_view text, DocumentEntry const& entry) {
    if (IsElement(entry)) {
        return {};
    }
    std::string_view const bytes = text.substr(entry.key.begin + 1, entry.key.Size() - 1);
    return bytes.substr(0, bytes.find('\0'));
}

// The items of sorted whose key, as keyOf returns it, is equal to key. sorted is ordered by that
// key. Not std::ranges::equal_range: some supported compilers do not compile it.
template <class Item, class Key, class KeyOf>
std::span<Item const> EqualRange(std::span<Item const> sorted, Key const& key, KeyOf const& keyOf) {
    auto const begin = std::ranges::lower_bound(sorted, key, {}, keyOf);
    auto const end = std::ranges::upper_bound(sorted, key, {}, keyOf);
    return sorted.subspan(
        static_cast<std::size_t>(begin - sorted.begin()), static_cast<std::size_t>(end - begin));
}

// An index of entries by parent and key, so that finding an entry takes logarithmic time. REQUIRES:
// text and entries outlive it.
class EntryTree {
public:
    EntryTree(std::string_view text, std::span<DocumentEntry const> entries)
        : fText(text),
          fEntries(entries) {
        std::vector<std::size_t> parents;
        for (std::size_t place = 0; place < entries.size(); ++place) {
            parents.resize(entries[place].depth);
            fChildren.push_back({parents.empty() ? 0 : parents.back(), place});
            parents.push_back(place + 1);
        }
        auto const order = [&](Child const& child) {
            return std::tuple(child.fParent, KeyIn(text, entries[child.fEntry]), child.fEntry);
        };
        std::ranges::sort(fChildren, {}, order);
    }

    // The entry at a path of keys and positions; null if there is none. Of equal keys the last one
    // counts.
    DocumentEntry const* Find(std::string_view path) const {
        std::size_t parent = 0;
        for (;;) {
            std::string_view const part = format::FirstPart(path);
            auto const found = FindChild(parent, part);
            if (!found || part.size() == path.size()) {
                return found ? &fEntries[*found] : nullptr;
            }
            path.remove_prefix(part.size() + 1);
            parent = *found + 1;
        }
    }

private:
    struct Child {
        std::size_t fParent; // index of the parent's entry plus one; 0 for the root
        std::size_t fEntry;
    };

    std::optional<std::size_t> FindChild(std::size_t parent, std::string_view part) const {
        auto const children =
            EqualRange(std::span<Child const>(fChildren), parent, [](Child const& child) {
                return child.fParent;
            });
        if (children.empty()) {
            return std::nullopt;
        }
        if (IsElement(fEntries[children.front().fEntry])) {
            std::size_t const position = format::PositionIn(part).value_or(children.size());
            bool const isThere = position < children.size();
            return isThere ? std::optional(children[position].fEntry) : std::nullopt;
        }
        auto const equal = EqualRange(children, part, [this](Child const& child) {
            return KeyIn(fText, fEntries[child.fEntry]);
        });
        return equal.empty() ? std::nullopt : std::optional(equal.back().fEntry);
    }

    std::string_view fText;
    std::span<DocumentEntry const> fEntries;
    std::vector<Child> fChildren; // sorted by parent, key and position
};

constexpr std::size_t kLongestCharacter = 4;

bool ContinuesCharacter(char byte) noexcept {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// Whether text begins with a character of UTF-8 of at least fewest bytes.
bool BeginsWithCharacter(std::string_view text, std::size_t fewest) {
    for (std::size_t size = fewest; size <= std::min(text.size(), kLongestCharacter); ++size) {
        if (utf8::is_valid(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(size))) {
            return true;
        }
    }
    return false;
}

// Whether the byte at offset is in a character of UTF-8 that begins before it.
bool IsInCharacter(std::string_view text, std::size_t offset) {
    std::size_t back = 0;
    while (back < std::min(offset, kLongestCharacter) && ContinuesCharacter(text[offset - back])) {
        ++back;
    }
    return back > 0 && BeginsWithCharacter(text.substr(offset - back), back + 1);
}

// The number of characters that begin between begin and end.
std::size_t CountCharacters(std::string_view text, std::size_t begin, std::size_t end) {
    std::size_t count = 0;
    for (std::size_t offset = begin; offset < end; ++offset) {
        count += IsInCharacter(text, offset) ? 0U : 1U;
    }
    return count;
}

bool IsLineEnd(char byte) noexcept {
    return byte == '\r' || byte == '\n';
}

// An index of the lines of a text, and of the number of characters before each block, so that the
// position of an offset takes about the same time in a long line. Lines end with CR, LF or CR LF;
// columns count characters of UTF-8. REQUIRES: text outlives it.
class TextLines {
public:
    explicit TextLines(std::string_view text) : fText(text) {
        for (std::size_t end = text.find_first_of("\r\n"); end != std::string_view::npos;
             end = text.find_first_of("\r\n", end)) {
            end += text.substr(end).starts_with("\r\n") ? 2U : 1U;
            fStarts.push_back(end);
        }
        std::size_t characters = 0;
        for (std::size_t begin = 0; begin <= text.size(); begin += kBlock) {
            fCharacters.push_back(characters);
            characters += CountCharacters(text, begin, std::min(begin + kBlock, text.size()));
        }
    }

    Place PlaceOf(std::size_t offset) const {
        std::size_t const line = NumberOf(offset);
        std::size_t const before = CharactersBefore(fStarts[line - 1]);
        return {line, CharactersBefore(offset) - before + 1};
    }

    Span LineAt(std::size_t offset) const {
        std::size_t const line = NumberOf(offset);
        std::size_t const start = fStarts[line - 1];
        std::size_t end = line < fStarts.size() ? fStarts[line] : fText.size();
        bool const isLast = line == fStarts.size();
        while (!isLast && end > start && IsLineEnd(fText[end - 1])) {
            --end;
        }
        return {start, end};
    }

private:
    static constexpr std::size_t kBlock = 1024;

    // The number of the line of offset, from 1.
    std::size_t NumberOf(std::size_t offset) const {
        auto const next = std::ranges::upper_bound(fStarts, offset);
        return static_cast<std::size_t>(next - fStarts.begin());
    }

    // The number of characters that begin before offset.
    std::size_t CharactersBefore(std::size_t offset) const {
        std::size_t const begin = offset - offset % kBlock;
        return fCharacters[offset / kBlock] + CountCharacters(fText, begin, offset);
    }

    std::string_view fText;
    std::vector<std::size_t> fStarts{0};
    // For each block, the number of characters that begin before it.
    std::vector<std::size_t> fCharacters;
};

struct Task {
    std::function<void()> const& fWork;
    std::exception_ptr fError;
};

void* Run(void* argument) noexcept {
    auto& task = *static_cast<Task*>(argument);
    try {
        task.fWork();
    } catch (...) {
        task.fError = std::current_exception();
    }
    return nullptr;
}

// Runs work on a thread with a stack that is larger than any that the component is likely to run
// on, and waits for it. Throws what work throws. Does nothing if the system cannot create such a
// thread.
void RunOnDeepStack(std::function<void()> const& work) {
    // This reserves address space; memory is used only as deep as the recursion goes. The address
    // sanitizer supports no stacks above 64 MiB.
    constexpr std::size_t kSize = std::size_t{60} << 20;
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) {
        return;
    }
    Task task{work, nullptr};
    pthread_t thread{};
    bool const isRunning = pthread_attr_setstacksize(&attributes, kSize) == 0 &&
                           pthread_create(&thread, &attributes, &Run, &task) == 0;
    pthread_attr_destroy(&attributes);
    if (isRunning) {
        pthread_join(thread, nullptr);
    }
    if (task.fError) {
        std::rethrow_exception(task.fError);
    }
}

std::vector<std::string> KeysOf(Dictionary const& values) {
    std::vector<std::string> keys;
    for (auto const& [key, value] : values) {
        keys.push_back(key);
    }
    return keys;
}

// The path that a missing path probably means: one with the same parent, or at the top; empty for
// no suggestion.
std::string NearestPath(Dictionary const& values, std::string_view path) {
    std::string const key(format::LastPart(path));
    std::string const parent(format::ParentPath(path));
    if (parent.empty()) {
        return detail::Nearest(key, KeysOf(values));
    }
    Value const* const value = values.Find(parent);
    auto const beside = value == nullptr ? std::nullopt : value->If<Dictionary>();
    std::string const nearest = beside ? detail::Nearest(key, KeysOf(*beside)) : std::string();
    return nearest.empty() ? nearest : parent + "/" + nearest;
}

[[noreturn]] void ThrowMissing(Dictionary const& values, std::string_view path) {
    std::string const meant = NearestPath(values, path);
    throw Error(
        Fault::kNoValue,
        "no such key: " + std::string(path) +
            (meant.empty() ? "" : "; did you mean " + meant + "?"));
}

} // namespace

struct Document::Reading {
    explicit Reading(std::string text) : fText(std::move(text)) {
        auto scanner = std::make_unique<detail::DocumentScanner>(fText);
        scanner->Scan();
        // Nested values are read recursively, and the scanner needs more stack for each level than
        // the component. A text that is too deep for the scanner here may still be read by the
        // component, so it is scanned again on a deep stack. If even that is too small, the text is
        // refused.
        if (scanner->fIsTooDeep) {
            RunOnDeepStack([this, &scanner] {
                scanner = std::make_unique<detail::DocumentScanner>(fText);
                scanner->Scan();
            });
        }
        fRefusal = scanner->fRefusal;
        fValues = std::move(scanner->fValues);
        fTail = std::move(scanner->fTail);
        fEntries = std::move(scanner->fEntries);
        fFindings = MakeFindings(scanner->fFindings.Take());
        fBody = scanner->fBody;
    }
    Reading(Reading const&) = delete;
    Reading& operator=(Reading const&) = delete;
    ~Reading() = default;

    pdfsettings::Findings MakeFindings(std::vector<detail::TextFinding> found) const {
        std::vector<Finding> findings;
        findings.reserve(found.size());
        for (detail::TextFinding& finding : found) {
            findings.emplace_back(
                finding.severity,
                finding.id,
                std::string(),
                std::move(finding.message),
                finding.span,
                Lines().PlaceOf(finding.span.begin));
        }
        return detail::MakeSequence::From(std::move(findings));
    }

    // Created on first use: most documents are only read.
    TextLines const& Lines() const {
        std::call_once(fLinesMade, [this] { fLines.emplace(fText); });
        return *fLines;
    }
    EntryTree const& Tree() const {
        std::call_once(fTreeMade, [this] { fTree.emplace(fText, fEntries); });
        return *fTree;
    }

    std::string const fText;
    Refusal fRefusal = Refusal::kNone;
    Dictionary fValues;
    std::string fTail;
    std::vector<DocumentEntry> fEntries;
    pdfsettings::Findings fFindings;
    std::optional<Span> fBody;

private:
    mutable std::once_flag fLinesMade;
    mutable std::optional<TextLines> fLines;
    mutable std::once_flag fTreeMade;
    mutable std::optional<EntryTree> fTree;
};

Document::Document(std::string text) : fReading(std::make_shared<Reading const>(std::move(text))) {}
Document::Document(Document const&) noexcept = default;
Document& Document::operator=(Document const&) noexcept = default;
Document::~Document() = default;

std::string const& Document::Text() const noexcept {
    return fReading->fText;
}

Refusal Document::WhyRefused() const noexcept {
    return fReading->fRefusal;
}

Dictionary const& Document::Values() const noexcept {
    return fReading->fValues;
}

std::string const& Document::Tail() const noexcept {
    return fReading->fTail;
}

Findings const& Document::Findings() const noexcept {
    return fReading->fFindings;
}

std::span<DocumentEntry const> Document::Entries() const noexcept {
    return fReading->fEntries;
}

std::optional<Span> Document::Body() const noexcept {
    return fReading->fBody;
}

DocumentEntry const* Document::Find(std::string_view path) const {
    return fReading->Tree().Find(path);
}

Value const& Document::At(std::string_view path) const {
    Value const* const value = Values().Find(path);
    if (value == nullptr) {
        ThrowMissing(Values(), path);
    }
    return *value;
}

std::string Document::KeyOf(DocumentEntry const& entry) const {
    return std::string(KeyIn(Text(), entry));
}

Place Document::PlaceOf(std::size_t offset) const {
    return fReading->Lines().PlaceOf(offset);
}

Span Document::LineAt(std::size_t offset) const {
    return fReading->Lines().LineAt(offset);
}

void Document::RequireRead() const {
    for (Finding const& finding : Findings()) {
        if (finding.Level() == Severity::kError) {
            throw Error(Fault::kSyntax, finding.Message(), {}, finding.Where(), {}, finding.Id());
        }
    }
}

} // namespace pdfsettings
