#include "format/NumberText.h"

#include "format/FloatFromChars.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <optional>

namespace format {

namespace {

bool IsHexDigit(char c) noexcept {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool StartsWithHexMark(std::string_view text) noexcept {
    return text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

// Whether text begins with "0x" and hexadecimal digits of an integer, or of a real number.
bool IsHexInteger(std::string_view text) noexcept {
    return StartsWithHexMark(text) && IsHexDigit(text[2]);
}

bool IsHexReal(std::string_view text) noexcept {
    bool const isFraction =
        StartsWithHexMark(text) && text[2] == '.' && text.size() > 3 && IsHexDigit(text[3]);
    return IsHexInteger(text) || isFraction;
}

bool IsDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

// The end of the digits that begin at start in text.
std::size_t EndOfDigits(std::string_view text, std::size_t start) noexcept {
    return std::min(text.find_first_not_of("0123456789", start), text.size());
}

// The part of text that is one hexadecimal number by C17: digits with at most one point, and a
// complete exponent. std::from_chars accepts more.
std::string_view CutHexNumber(std::string_view text) noexcept {
    bool hasPoint = false;
    std::size_t end = 0;
    for (; end < text.size(); ++end) {
        bool const isPoint = text[end] == '.' && !hasPoint;
        if (!isPoint && !IsHexDigit(text[end])) {
            break;
        }
        hasPoint = hasPoint || isPoint;
    }
    std::string_view const rest = text.substr(end);
    if (rest.starts_with('p') || rest.starts_with('P')) {
        bool const isSigned = rest.size() > 1 && (rest[1] == '+' || rest[1] == '-');
        std::size_t const first = isSigned ? 2 : 1;
        bool const isComplete = first < rest.size() && IsDigit(rest[first]);
        end += isComplete ? EndOfDigits(rest, first) : 0;
    }
    return text.substr(0, end);
}

// No number has enough digits to compensate for an exponent this far from zero.
constexpr std::int64_t kFarExponent = std::int64_t{1} << 29;

// The exponent of a number, limited to the range of kFarExponent; 0 if it has none.
std::int64_t ExponentOf(std::string_view number, bool isHex) noexcept {
    std::size_t const mark = number.find_first_of(isHex ? "pP" : "eE");
    if (mark == std::string_view::npos) {
        return 0;
    }
    std::string_view exponent = number.substr(mark + 1);
    exponent.remove_prefix(exponent.starts_with('+') ? 1 : 0);
    std::int64_t power = 0;
    auto const result = std::from_chars(exponent.data(), exponent.data() + exponent.size(), power);
    constexpr std::int64_t kEnd = kFarExponent + 1;
    if (result.ec == std::errc::result_out_of_range) {
        return exponent.starts_with('-') ? -kEnd : kEnd;
    }
    return std::clamp(power, -kEnd, kEnd);
}

// The value of a number that is out of range: infinity or zero, as the position of its first
// significant digit and its exponent decide.
double OutOfRangeValue(std::string_view number, bool isHex) noexcept {
    std::string_view const mantissa = number.substr(0, number.find_first_of(isHex ? "pP" : "eE"));
    std::size_t const point = std::min(mantissa.find('.'), mantissa.size());
    std::size_t const first = mantissa.find_first_not_of("0.");
    if (first == std::string_view::npos) {
        return 0.0;
    }
    auto const places = static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first);
    bool const isLarge = ExponentOf(number, isHex) + places * (isHex ? 4 : 1) > 0;
    return isLarge ? std::numeric_limits<double>::infinity() : 0.0;
}

// Reads the unsigned number that text begins with. Size 0 if there is none.
ScannedNumber ScanMagnitude(std::string_view text, bool isHex) {
    std::string_view const number = isHex ? CutHexNumber(text) : text;
    char const* const begin = number.data();
    double value = 0;
    auto const result = FloatFromChars(number, value, isHex);
    if (result.ec == std::errc::invalid_argument) {
        return {0, 0};
    }
    auto const size = static_cast<std::size_t>(result.ptr - begin);
    // std::from_chars overflows on extreme exponents of hexadecimal numbers.
    bool const isFar = isHex && std::abs(ExponentOf(number, isHex)) > kFarExponent;
    if (isFar || result.ec == std::errc::result_out_of_range) {
        value = OutOfRangeValue(number.substr(0, size), isHex);
    }
    return {value, size};
}

ScannedNumber ScanReal(std::string_view token) {
    std::size_t const sign = token.starts_with('-') ? 1 : 0;
    std::string_view const unsignedToken = token.substr(sign);
    std::size_t const prefix = IsHexReal(unsignedToken) ? 2 : 0;
    std::string_view const digits = unsignedToken.substr(prefix);
    if (digits.starts_with('-')) {
        return {0, 0};
    }
    ScannedNumber const magnitude = ScanMagnitude(digits, prefix != 0);
    if (magnitude.fSize == 0) {
        return {0, 0};
    }
    return {sign != 0 ? -magnitude.fValue : magnitude.fValue, sign + prefix + magnitude.fSize};
}

// The value with its sign, limited to the range of long.
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

// The integer that value is in single precision, if it fits into 32 bits.
std::optional<std::int32_t> AsWholeNumber(double value) noexcept {
    // Keeps all conversions below in range. NaN fails this test too.
    if (!(std::fabs(value) < 0x1p32)) {
        return std::nullopt;
    }
    float const single = static_cast<float>(value);
    if (single < -0x1p31F || single >= 0x1p31F) {
        return std::nullopt;
    }
    auto const whole = static_cast<std::int32_t>(single);
    return static_cast<float>(whole) == single ? std::optional(whole) : std::nullopt;
}

} // namespace

std::string_view NaNText(double value) noexcept {
    return std::signbit(value) ? "-nan" : "nan";
}

std::to_chars_result FormatNumber(char* begin, char* end, double value) noexcept {
    auto const whole = AsWholeNumber(value);
    return whole ? std::to_chars(begin, end, *whole) : FormatDecimals(begin, end, value, kDecimals);
}

std::to_chars_result FormatDecimals(char* begin, char* end, double value, int decimals) noexcept {
    if (!std::isnan(value)) {
        return std::to_chars(begin, end, value, std::chars_format::fixed, decimals);
    }
    std::string_view const text = NaNText(value);
    bool const hasRoom = static_cast<std::size_t>(end - begin) >= text.size();
    return hasRoom ? std::to_chars_result{std::ranges::copy(text, begin).out, std::errc()}
                   : std::to_chars_result{end, std::errc::value_too_large};
}

std::string ShortestText(double value) {
    char text[32];
    return std::isnan(value)
               ? std::string(NaNText(value))
               : std::string(text, std::to_chars(std::begin(text), std::end(text), value).ptr);
}

std::string ExactText(double value) {
    std::string text = ShortestText(value);
    std::size_t const exponent = std::min(text.find('e'), text.size());
    bool const isNegativeZero = value == 0 && std::signbit(value);
    constexpr auto kEnd = -static_cast<double>(std::numeric_limits<long>::min());
    bool const isWholeForm = std::abs(value) < kEnd && exponent == text.size();
    bool const hasPoint = text.find('.') != std::string::npos;
    if (std::isfinite(value) && !hasPoint && (isNegativeZero || !isWholeForm)) {
        text.insert(exponent, ".0");
    }
    return text;
}

std::string WholeText(double value) {
    char text[kLargestNumber];
    return {text, FormatDecimals(std::begin(text), std::end(text), value, 0).ptr};
}

ScannedNumber ScanNumber(std::string_view token) {
    return ScanNumber(token, token.find('.') != std::string_view::npos);
}

ScannedNumber ScanNumber(std::string_view token, bool isReal) {
    return isReal ? ScanReal(token) : ScanInteger(token);
}

} // namespace format
