// Text encodings apart from the string service: UTF-8, UTF-16 and Mac Roman.
#pragma once

#include "platform/CFBase.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace platform {

// Converts UTF-8 to UTF-16. units must have room for as many units as there are bytes, which is the
// maximum. Returns the number of units, or nullopt for invalid UTF-8. Instantiated for the two unit
// types that the services use.
template <class Unit>
std::optional<std::size_t> DecodeUtf8(std::string_view bytes, Unit* units) noexcept;

// Converts UTF-16 to UTF-8; nullopt if there is an unpaired surrogate. Throws std::bad_alloc.
std::optional<std::string> EncodeUtf8(std::span<UniChar const> units);

// The Mac Roman character of a byte, and the byte of a character; nullopt if Mac Roman lacks it.
char16_t FromMacRoman(unsigned char byte) noexcept;
std::optional<unsigned char> ToMacRoman(char16_t character) noexcept;

} // namespace platform
