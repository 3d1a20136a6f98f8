// Numbers in settings texts, read and written the same way whatever the program's locale.
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

// Reads the number at the head of token. A "." anywhere in the token makes it a real number: C17
// strtod in the "C" locale, with overflow to infinity. Otherwise it is a whole number: C17 strtol
// with base 0, so "010" is 8 and "0x10" is 16, saturating at the ends of long.
ScannedNumber ScanNumber(std::string_view token) noexcept;

// The same for a token of which it is known whether it has a ".". The time depends on the number
// alone, however long the token is.
ScannedNumber ScanNumber(std::string_view token, bool isReal) noexcept;

// The decimals of a number that is not whole.
inline constexpr int kDecimals = 5;

// The most bytes of a number: a sign, its digits, a point and its decimals.
inline constexpr std::size_t kLargestNumber =
    1 + std::numeric_limits<double>::max_exponent10 + 1 + 1 + kDecimals;

// Writes value as std::to_chars does: a value that is whole in single precision, and that 32 bits
// can hold, as a whole number, any other with kDecimals decimals.
std::to_chars_result FormatNumber(char* begin, char* end, double value) noexcept;

// The same with so many decimals, for every value.
std::to_chars_result FormatDecimals(char* begin, char* end, double value, int decimals) noexcept;

// The fewest digits that give value back, with an exponent where that is shorter; "inf" or "nan",
// with a sign, for what is not finite.
std::string ShortestText(double value);

// The same in a form that the reader of the format takes for this number, where there is one: it
// reads a number without a point as a whole number of 64 bits, so that 1e5 would read as 1.
std::string ExactText(double value);

// All digits of the whole part of value.
std::string WholeText(double value);

} // namespace format
