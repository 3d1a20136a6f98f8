#include "platform/Encodings.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <utf8.h>
#include <utf8/unchecked.h>

namespace platform {

namespace {

// The first non-ASCII byte, or end. Names and paths are almost always ASCII, so eight bytes are
// checked at a time.
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

// The characters for the bytes from 0x80, in the mapping of the Unicode Consortium.
// clang-format off
constexpr char16_t kUpperHalf[] = {
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1,
    0x00E0, 0x00E2, 0x00E4, 0x00E3, 0x00E5, 0x00E7, 0x00E9, 0x00E8,
    0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3,
    0x00F2, 0x00F4, 0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC,
    0x2020, 0x00B0, 0x00A2, 0x00A3, 0x00A7, 0x2022, 0x00B6, 0x00DF,
    0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8,
    0x221E, 0x00B1, 0x2264, 0x2265, 0x00A5, 0x00B5, 0x2202, 0x2211,
    0x220F, 0x03C0, 0x222B, 0x00AA, 0x00BA, 0x03A9, 0x00E6, 0x00F8,
    0x00BF, 0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248, 0x2206, 0x00AB,
    0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5, 0x0152, 0x0153,
    0x2013, 0x2014, 0x201C, 0x201D, 0x2018, 0x2019, 0x00F7, 0x25CA,
    0x00FF, 0x0178, 0x2044, 0x20AC, 0x2039, 0x203A, 0xFB01, 0xFB02,
    0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1,
    0x00CB, 0x00C8, 0x00CD, 0x00CE, 0x00CF, 0x00CC, 0x00D3, 0x00D4,
    0xF8FF, 0x00D2, 0x00DA, 0x00DB, 0x00D9, 0x0131, 0x02C6, 0x02DC,
    0x00AF, 0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD, 0x02DB, 0x02C7,
};
// clang-format on
static_assert(std::size(kUpperHalf) == 128);

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

char16_t FromMacRoman(unsigned char byte) noexcept {
    return byte < 0x80 ? char16_t{byte} : kUpperHalf[byte - 0x80];
}

std::optional<unsigned char> ToMacRoman(char16_t character) noexcept {
    if (character < 0x80) {
        return static_cast<unsigned char>(character);
    }
    auto const* const found = std::find(std::begin(kUpperHalf), std::end(kUpperHalf), character);
    if (found == std::end(kUpperHalf)) {
        return std::nullopt;
    }
    return static_cast<unsigned char>(0x80 + (found - std::begin(kUpperHalf)));
}

} // namespace platform
