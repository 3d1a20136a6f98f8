// The entries of a document by their paths.
#pragma once

#include "pdfsettings/DocumentEntry.h"

#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace pdfsettings::detail {

// Knows which entries stand in which, so that looking one up takes hardly longer in a large text.
class EntryTree {
public:
    EntryTree() = default;
    EntryTree(std::string_view text, std::span<DocumentEntry const> entries);

    // The place of the entry at a path of keys and positions, if there is one. Of equal keys the
    // last one counts. REQUIRES: the text and the entries of the constructor.
    std::optional<std::size_t> Find(
        std::string_view text, std::span<DocumentEntry const> entries, std::string_view path) const;

private:
    struct Child {
        std::size_t fParent; // the place behind its entry; 0 for the settings as a whole
        std::size_t fEntry;
    };

    std::optional<std::size_t> FindChild(
        std::string_view text,
        std::span<DocumentEntry const> entries,
        std::size_t parent,
        std::string_view part) const;

    std::vector<Child> fChildren; // by parent, then by key, then by place
};

// The key of an entry as the component reads it: without its slash, up to a zero byte. Empty for an
// element. Valid as long as the text.
std::string_view KeyIn(std::string_view text, DocumentEntry const& entry);

} // namespace pdfsettings::detail
