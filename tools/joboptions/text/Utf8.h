// Bytes as text: what of them a terminal may be given.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace joboptions {

// Whether all of text is UTF-8 without control characters, but for those below the space.
bool IsPlainText(std::string_view text);

// text with each byte of what is not printable as \ddd, three octal digits: of what is no
// well-formed UTF-8, and of characters that control a terminal, end a line, turn its direction or
// hide in it (the general categories Cc, Cf, Zl and Zp of Unicode).
std::string VisibleText(std::string_view text);

// text with each byte that is no part of a UTF-8 character in that form.
std::string WellFormedText(std::string_view text);

// A JSON document in UTF-8, in which each such character but a line end is an escape: those stand
// in its strings only.
std::string JsonEscapes(std::string_view json);

// The number of cells that a terminal takes for what VisibleText gave.
std::size_t DisplayWidth(std::string_view visible);

// The width of a column that holds visible too. It grows up to 40 cells: what is longer does not
// push the columns of all others to the right.
std::size_t Widened(std::size_t column, std::string_view visible);

// visible, with spaces behind it up to that width.
std::string Padded(std::string const& visible, std::size_t width);

} // namespace joboptions
