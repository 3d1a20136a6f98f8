#include "pdfsettings/detail/EntryTree.h"

#include "pdfsettings/Path.h"

#include <algorithm>
#include <charconv>
#include <tuple>

namespace pdfsettings::detail {

namespace {

bool IsElement(DocumentEntry const& entry) {
    return entry.key.Size() == 0;
}

// The position that a part of a path names, if it is one.
std::optional<std::size_t> PositionIn(std::string_view part) {
    std::size_t position = 0;
    auto const result = std::from_chars(part.data(), part.data() + part.size(), position);
    bool const isWhole = result.ec == std::errc() && result.ptr == part.data() + part.size();
    return isWhole ? std::optional(position) : std::nullopt;
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
        std::string_view const part = FirstPart(path);
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
        std::size_t const position = PositionIn(part).value_or(children.size());
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

} // namespace pdfsettings::detail
