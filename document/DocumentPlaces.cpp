#include "document/DocumentPlaces.h"

#include "format/SettingPath.h"

#include <algorithm>
#include <tuple>
#include <utf8.h>

namespace pdfsettings::detail {

namespace {

bool IsElement(DocumentEntry const& entry) {
    return entry.key.Size() == 0;
}

// The part of sorted, which is sorted by what keyOf gives, with that key. The ranges library's own
// does not compile with every compiler that we use.
template <class Item, class Key, class KeyOf>
std::span<Item const> EqualRange(std::span<Item const> sorted, Key const& key, KeyOf const& keyOf) {
    auto const begin = std::ranges::lower_bound(sorted, key, {}, keyOf);
    auto const end = std::ranges::upper_bound(sorted, key, {}, keyOf);
    return sorted.subspan(
        static_cast<std::size_t>(begin - sorted.begin()), static_cast<std::size_t>(end - begin));
}

} // namespace

EntryTree::EntryTree(std::string_view text, std::span<DocumentEntry const> entries) {
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

std::optional<std::size_t> EntryTree::Find(
    std::string_view text, std::span<DocumentEntry const> entries, std::string_view path) const {
    std::size_t parent = 0;
    for (;;) {
        std::string_view const part = format::FirstPart(path);
        auto const found = FindChild(text, entries, parent, part);
        if (!found || part.size() == path.size()) {
            return found;
        }
        path.remove_prefix(part.size() + 1);
        parent = *found + 1;
    }
}

std::optional<std::size_t> EntryTree::FindChild(
    std::string_view text,
    std::span<DocumentEntry const> entries,
    std::size_t parent,
    std::string_view part) const {
    auto const children =
        EqualRange(std::span<Child const>(fChildren), parent, [](Child const& child) {
            return child.fParent;
        });
    if (children.empty()) {
        return std::nullopt;
    }
    if (IsElement(entries[children.front().fEntry])) {
        std::size_t const position = format::PositionIn(part).value_or(children.size());
        bool const isThere = position < children.size();
        return isThere ? std::optional(children[position].fEntry) : std::nullopt;
    }
    auto const equal = EqualRange(
        children, part, [&](Child const& child) { return KeyIn(text, entries[child.fEntry]); });
    return equal.empty() ? std::nullopt : std::optional(equal.back().fEntry);
}

std::string_view KeyIn(std::string_view text, DocumentEntry const& entry) {
    if (IsElement(entry)) {
        return {};
    }
    std::string_view const bytes = text.substr(entry.key.begin + 1, entry.key.Size() - 1);
    return bytes.substr(0, bytes.find('\0'));
}

namespace {

constexpr std::size_t kBlock = 1024;

constexpr std::size_t kLongestCharacter = 4;

bool ContinuesCharacter(char byte) noexcept {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// Whether text begins with a character of so many bytes or more.
bool BeginsWithCharacter(std::string_view text, std::size_t fewest) {
    for (std::size_t size = fewest; size <= std::min(text.size(), kLongestCharacter); ++size) {
        if (utf8::is_valid(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(size))) {
            return true;
        }
    }
    return false;
}

// Whether the byte at offset stands in a character of UTF-8 that begins before it.
bool IsInCharacter(std::string_view text, std::size_t offset) {
    std::size_t back = 0;
    while (back < std::min(offset, kLongestCharacter) && ContinuesCharacter(text[offset - back])) {
        ++back;
    }
    return back > 0 && BeginsWithCharacter(text.substr(offset - back), back + 1);
}

// How many characters begin in a part of the text.
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

} // namespace

TextLines::TextLines(std::string_view text) {
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

Place TextLines::PlaceOf(std::string_view text, std::size_t offset) const {
    std::size_t const line = NumberOf(offset);
    std::size_t const before = CharactersBefore(text, fStarts[line - 1]);
    return {line, CharactersBefore(text, offset) - before + 1};
}

Span TextLines::LineAt(std::string_view text, std::size_t offset) const {
    std::size_t const line = NumberOf(offset);
    std::size_t const start = fStarts[line - 1];
    std::size_t end = line < fStarts.size() ? fStarts[line] : text.size();
    bool const isLast = line == fStarts.size();
    while (!isLast && end > start && IsLineEnd(text[end - 1])) {
        --end;
    }
    return {start, end};
}

std::size_t TextLines::NumberOf(std::size_t offset) const {
    auto const next = std::ranges::upper_bound(fStarts, offset);
    return static_cast<std::size_t>(next - fStarts.begin());
}

std::size_t TextLines::CharactersBefore(std::string_view text, std::size_t offset) const {
    std::size_t const begin = offset - offset % kBlock;
    return fCharacters[offset / kBlock] + CountCharacters(text, begin, offset);
}

} // namespace pdfsettings::detail
