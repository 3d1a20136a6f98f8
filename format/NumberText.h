// Numbers in texts, read the same way whatever the program's locale.
#pragma once

#include <cstddef>
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

} // namespace format
