// The lines and columns of a text.
#pragma once

#include "pdfsettings/TextFinding.h"

#include <string_view>
#include <vector>

namespace pdfsettings::detail {

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
