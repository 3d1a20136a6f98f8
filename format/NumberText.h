// Numbers in settings files, read and written independently of the locale.
#pragma once

#include <charconv>
#include <cstddef>
#include <limits>
#include <string>
#include <string_view>

namespace format {

struct ScannedNumber {
    double fValue;
    std::size_t fSize; // in bytes; 0, with the value 0, when there is no number
};

// Reads the number that token begins with. If there is a "." anywhere in token, the number is real:
// read as by C17 strtod in the "C" locale, with overflow to infinity. Otherwise it is an integer:
// read as by C17 strtol with base 0, so "010" is 8 and "0x10" is 16, limited to the range of long.
// May throw std::bad_alloc.
ScannedNumber ScanNumber(std::string_view token);

// As above, for a token that is known to have a "." or not. The time depends on the length of the
// number only, not on the length of the token.
ScannedNumber ScanNumber(std::string_view token, bool isReal);

// The text of a NaN, to which std::to_chars of some standard libraries appends its kind.
std::string_view NaNText(double value) noexcept;

// The number of decimals of a number that is not an integer.
inline constexpr int kDecimals = 5;

// The maximum length of a number, in bytes: a sign, digits, a point and decimals.
inline constexpr std::size_t kLargestNumber =
    1 + std::numeric_limits<double>::max_exponent10 + 1 + 1 + kDecimals;

// Writes value, with the result of std::to_chars: a value that is an integer in single precision
// and fits into 32 bits as an integer, any other with kDecimals decimals.
std::to_chars_result FormatNumber(char* begin, char* end, double value) noexcept;

// As above, with the given number of decimals for every value.
std::to_chars_result FormatDecimals(char* begin, char* end, double value, int decimals) noexcept;

// The fewest digits that read back as value, with an exponent if that is shorter; "inf" or "nan",
// with a sign, for a value that is not finite.
std::string ShortestText(double value);

// As ShortestText, in a form that the format reads as the same number, if there is one. The format
// reads a number without a point as a long, so 1e5 would be read as 1.
std::string ExactText(double value);

// All digits of the integer part of value.
std::string WholeText(double value);

} // namespace format
