// Decoding of UTF-8. Private to the platform layer.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace platform {

// Writes bytes in UTF-16 to units, which has room for as many units as there are bytes: there are
// never more. Their number; none for bytes that are no UTF-8. Defined for the two types of units
// that the services use.
template <class Unit>
std::optional<std::size_t> DecodeUtf8(std::string_view bytes, Unit* units) noexcept;

} // namespace platform
