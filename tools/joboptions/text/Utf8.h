// Bytes as text: what of them a terminal may be given.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace joboptions {

// A piece of text: one character, or one byte that begins none.
struct Character {
    std::string_view bytes;
    // Well-formed UTF-8, and none that controls a terminal, ends a line, turns its direction or
    // hides in it (the general categories Cc, Cf, Zl and Zp of Unicode).
    bool isPrintable;
};

// The character at the start of text. REQUIRES: text is not empty.
Character FirstCharacter(std::string_view text);

// Whether all of text is printable, line ends and other controls below the space excepted.
bool IsPlainText(std::string_view text);

// text with each byte of an unprintable character as \ddd, three octal digits.
std::string VisibleText(std::string_view text);

// text with each byte that is no part of a UTF-8 character in that form.
std::string WellFormedText(std::string_view text);

// A JSON document in UTF-8, in which each unprintable character but a line end is an escape: those
// stand in its strings only.
std::string JsonEscapes(std::string_view json);

// The number of cells that a terminal takes for what VisibleText gave.
std::size_t DisplayWidth(std::string_view visible);

} // namespace joboptions
