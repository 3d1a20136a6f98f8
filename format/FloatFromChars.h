// Floating-point numbers from text, also with a standard library that has no std::from_chars for
// them.
#pragma once

#include <charconv>
#include <string_view>

namespace format {

// As std::from_chars of the bytes of text. May throw std::bad_alloc.
std::from_chars_result FloatFromChars(
    std::string_view text, double& value, std::chars_format format = std::chars_format::general);

} // namespace format
