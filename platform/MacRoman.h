// The Mac Roman encoding. Private to the platform layer.
#pragma once

#include <optional>

namespace platform {

// The character of a byte, and the byte of a character; none for one that the encoding lacks.
char16_t FromMacRoman(unsigned char byte) noexcept;
std::optional<unsigned char> ToMacRoman(char16_t character) noexcept;

} // namespace platform
