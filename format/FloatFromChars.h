// Floating-point numbers from text, also with a standard library that has no std::from_chars for
// them.
#pragma once

#include <charconv>
#include <string_view>

namespace format {

// As std::from_chars of the bytes of text in the general format, or, if isHex, of a hexadecimal
// number that is all of text. The time depends on the length of the number only. May throw
// std::bad_alloc.
std::from_chars_result FloatFromChars(std::string_view text, double& value, bool isHex = false);

} // namespace format
