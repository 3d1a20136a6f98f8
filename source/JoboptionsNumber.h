// The numbers of job options text, read the same way whatever the host's locale.
#pragma once

namespace JoboptionsParserUtils {

struct ScannedNumber {
    double fValue;
    unsigned long fSize; // in bytes; 0, with the value 0, when there is no number
};

// Reads the number at the head of the token from begin to end. A "." anywhere in the token makes it
// a real number: C17 strtod in the "C" locale, with overflow to infinity. Otherwise it is a whole
// number: C17 strtol with base 0, so "010" is 8 and "0x10" is 16, saturating at the ends of long.
ScannedNumber ScanNumber(char const* begin, char const* end) noexcept;

} // namespace JoboptionsParserUtils
