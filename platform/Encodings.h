// Text encodings, outside the string service: UTF-8, UTF-16 and Mac Roman.
#pragma once

#include "platform/CFBase.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace platform {

// Writes bytes in UTF-16 to units, which has room for as many units as there are bytes: there are
// never more. Their number; none for bytes that are no UTF-8. Defined for the two types of units
// that the services use.
template <class Unit>
std::optional<std::size_t> DecodeUtf8(std::string_view bytes, Unit* units) noexcept;

// The units in UTF-8; none where one of them is half a character. Throws std::bad_alloc.
std::optional<std::string> EncodeUtf8(std::span<UniChar const> units);

// The character of a byte, and the byte of a character; none for one that the encoding lacks.
char16_t FromMacRoman(unsigned char byte) noexcept;
std::optional<unsigned char> ToMacRoman(char16_t character) noexcept;

} // namespace platform
