#include "platform/Utf8.h"

#include <algorithm>

#include <utf8.h>
#include <utf8/unchecked.h>

namespace platform {

template <class Unit>
std::optional<std::size_t> DecodeUtf8(std::string_view bytes, Unit* units) noexcept {
    // Names and paths are ASCII up to their end nearly always.
    auto const* const rest = std::find_if(
        bytes.begin(), bytes.end(), [](char byte) { return static_cast<signed char>(byte) < 0; });
    if (!utf8::is_valid(rest, bytes.end())) {
        return std::nullopt;
    }
    Unit* const last = std::copy(bytes.begin(), rest, units);
    return static_cast<std::size_t>(utf8::unchecked::utf8to16(rest, bytes.end(), last) - units);
}

template std::optional<std::size_t> DecodeUtf8(std::string_view, unsigned short*) noexcept;
template std::optional<std::size_t> DecodeUtf8(std::string_view, char16_t*) noexcept;

} // namespace platform
