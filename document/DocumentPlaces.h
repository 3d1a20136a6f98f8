// Places in a document: its entries by their paths, and its lines and columns.
#pragma once

#include "pdfsettings/Document.h"

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

// Knows where the lines of a text begin and how many characters stand before a place, so that a
// question costs the same however long a line is. Lines end with CR, LF or CR LF; columns count
// the characters of UTF-8.
class TextLines {
public:
    explicit TextLines(std::string_view text);

    // The place of the byte at offset in the text. REQUIRES: offset <= text.size(), and the text of
    // the constructor.
    Place PlaceOf(std::string_view text, std::size_t offset) const;

    // The line that offset lies in, without its line end. REQUIRES: as PlaceOf.
    Span LineAt(std::string_view text, std::size_t offset) const;

private:
    // The number of the line, counted from 1.
    std::size_t NumberOf(std::size_t offset) const;

    // How many characters begin before offset.
    std::size_t CharactersBefore(std::string_view text, std::size_t offset) const;

    std::vector<std::size_t> fStarts{0};
    // How many characters begin before each block.
    std::vector<std::size_t> fCharacters;
};

} // namespace pdfsettings::detail
