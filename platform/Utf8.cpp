#include "platform/Utf8.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>

#include <utf8.h>
#include <utf8/unchecked.h>

namespace platform {

namespace {

// Where ASCII ends. Names and paths are nothing else nearly always, so eight bytes are looked at in
// one step.
char const* EndOfAscii(char const* begin, char const* end) noexcept {
    constexpr std::uint64_t kHighBits = 0x8080808080808080U;
    std::uint64_t bytes = 0;
    while (end - begin >= static_cast<std::ptrdiff_t>(sizeof bytes)) {
        std::memcpy(&bytes, begin, sizeof bytes);
        if ((bytes & kHighBits) != 0) {
            break;
        }
        begin += sizeof bytes;
    }
    return std::find_if(
        begin, end, [](char byte) { return static_cast<unsigned char>(byte) >= 0x80; });
}

} // namespace

template <class Unit>
std::optional<std::size_t> DecodeUtf8(std::string_view bytes, Unit* units) noexcept {
    char const* const rest = EndOfAscii(bytes.begin(), bytes.end());
    if (!utf8::is_valid(rest, bytes.end())) {
        return std::nullopt;
    }
    Unit* const last = std::copy(bytes.begin(), rest, units);
    return static_cast<std::size_t>(utf8::unchecked::utf8to16(rest, bytes.end(), last) - units);
}

std::optional<std::string> EncodeUtf8(std::span<UniChar const> units) {
    std::string bytes;
    try {
        utf8::utf16to8(units.begin(), units.end(), std::back_inserter(bytes));
    } catch (utf8::exception const&) {
        return std::nullopt;
    }
    return bytes;
}

template std::optional<std::size_t> DecodeUtf8(std::string_view, unsigned short*) noexcept;
template std::optional<std::size_t> DecodeUtf8(std::string_view, char16_t*) noexcept;

} // namespace platform
