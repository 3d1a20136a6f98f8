#include "source/JoboptionsNumber.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <string_view>

namespace JoboptionsParserUtils {

namespace {

bool IsHexDigit(char c) noexcept {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool StartsWithHexMark(std::string_view text) noexcept {
    return text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

// Whether "0x" and the digits behind it are one whole number, or one real number.
bool IsHexInteger(std::string_view text) noexcept {
    return StartsWithHexMark(text) && IsHexDigit(text[2]);
}

bool IsHexReal(std::string_view text) noexcept {
    bool const isFraction =
        StartsWithHexMark(text) && text[2] == '.' && text.size() > 3 && IsHexDigit(text[3]);
    return IsHexInteger(text) || isFraction;
}

// A number out of range is an infinity or nothing, and which of the two, the place of its first
// digit and its exponent decide. The exponent may itself be out of any range.
bool IsLarge(std::string_view digits, bool isHex) noexcept {
    std::size_t const mark = digits.find_first_of(isHex ? "pP" : "eE");
    std::string_view const mantissa = digits.substr(0, mark);
    std::size_t const point = std::min(mantissa.find('.'), mantissa.size());
    std::size_t const first = mantissa.find_first_not_of("0.");
    if (mark == std::string_view::npos) {
        return first < point;
    }
    std::string_view exponent = digits.substr(mark + 1);
    exponent.remove_prefix(exponent.starts_with('+') ? 1 : 0);
    std::int64_t power = 0;
    auto const result = std::from_chars(exponent.data(), exponent.data() + exponent.size(), power);
    if (result.ec == std::errc::result_out_of_range) {
        return !exponent.starts_with('-');
    }
    auto const places = static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first);
    return power / (isHex ? 4 : 1) + places > 0;
}

ScannedNumber ScanReal(std::string_view token) noexcept {
    bool const isNegative = token.starts_with('-');
    std::string_view const unsignedToken = token.substr(isNegative ? 1 : 0);
    bool const isHex = IsHexReal(unsignedToken);
    std::string_view const digits = unsignedToken.substr(isHex ? 2 : 0);
    if (digits.starts_with('-')) {
        return {0, 0};
    }
    double value = 0;
    auto const result = std::from_chars(
        digits.data(),
        digits.data() + digits.size(),
        value,
        isHex ? std::chars_format::hex : std::chars_format::general);
    if (result.ec == std::errc::invalid_argument) {
        return {0, 0};
    }
    if (result.ec == std::errc::result_out_of_range) {
        std::string_view const number(
            digits.data(), static_cast<std::size_t>(result.ptr - digits.data()));
        value = IsLarge(number, isHex) ? std::numeric_limits<double>::infinity() : 0.0;
    }
    return {isNegative ? -value : value, static_cast<unsigned long>(result.ptr - token.data())};
}

// The value with its sign, kept within the range of long.
long Saturate(unsigned long magnitude, bool isNegative) noexcept {
    constexpr auto kMax = static_cast<unsigned long>(std::numeric_limits<long>::max());
    if (magnitude > kMax) {
        return isNegative ? std::numeric_limits<long>::min() : std::numeric_limits<long>::max();
    }
    auto const value = static_cast<long>(magnitude);
    return isNegative ? -value : value;
}

ScannedNumber ScanInteger(std::string_view token) noexcept {
    bool const isNegative = token.starts_with('-');
    std::string_view digits = token.substr(isNegative ? 1 : 0);
    int base = digits.starts_with('0') ? 8 : 10;
    if (IsHexInteger(digits)) {
        digits.remove_prefix(2);
        base = 16;
    }
    unsigned long magnitude = 0;
    auto const result =
        std::from_chars(digits.data(), digits.data() + digits.size(), magnitude, base);
    if (result.ec == std::errc::invalid_argument) {
        return {0, 0};
    }
    if (result.ec == std::errc::result_out_of_range) {
        magnitude = std::numeric_limits<unsigned long>::max();
    }
    return {
        static_cast<double>(Saturate(magnitude, isNegative)),
        static_cast<unsigned long>(result.ptr - token.data())};
}

} // namespace

ScannedNumber ScanNumber(char const* begin, char const* end) noexcept {
    std::string_view const token(begin, static_cast<std::size_t>(end - begin));
    return token.find('.') != std::string_view::npos ? ScanReal(token) : ScanInteger(token);
}

} // namespace JoboptionsParserUtils
