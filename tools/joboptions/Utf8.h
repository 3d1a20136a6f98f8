// Bytes as text: what of them a terminal may be given.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace joboptions {

// A piece of text: one character, or one byte that begins none.
struct Character {
    std::string_view bytes;
    bool isPrintable; // well-formed UTF-8 and no control character
};

// The character at the start of text. REQUIRES: text is not empty.
Character FirstCharacter(std::string_view text);

// Whether all of text is printable, line ends and other controls below the space excepted.
bool IsPlainText(std::string_view text);

// text with each byte of an unprintable character as \ddd, three octal digits.
std::string VisibleText(std::string_view text);

// The number of characters in what VisibleText gave.
std::size_t DisplayWidth(std::string_view visible);

} // namespace joboptions
