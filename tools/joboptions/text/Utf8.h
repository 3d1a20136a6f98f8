// UTF-8 text, and what a terminal may safely receive.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace joboptions {

// Whether text is UTF-8 without control characters, except those below the space.
bool IsPlainText(std::string_view text);

// text with \ddd, three octal digits, for each byte that is not printable: bytes that are not
// well-formed UTF-8, and characters that control a terminal, end a line, change the text direction
// or are invisible (the Unicode categories Cc, Cf, Zl and Zp).
std::string VisibleText(std::string_view text);

// text with \ddd for each byte that is not part of a UTF-8 character.
std::string WellFormedText(std::string_view text);

// A JSON document in UTF-8, with JSON escapes for the characters that VisibleText escapes, except
// line ends; these characters occur only in its strings.
std::string JsonEscapes(std::string_view json);

// The number of terminal cells of text from VisibleText.
std::size_t DisplayWidth(std::string_view visible);

// The width of a column that also has visible: at most 40 cells, so that one long text does not
// move the next columns far to the right.
std::size_t Widened(std::size_t column, std::string_view visible);

// The first characters of visible that fit into width cells, one at least. REQUIRES: visible is not
// empty.
std::string_view FittingPart(std::string_view visible, std::size_t width);

// visible, padded with blanks to width.
std::string Padded(std::string const& visible, std::size_t width);

} // namespace joboptions
