// Numbers as job options text, the same whatever the host's locale.
#pragma once

#include "bib/BIBStream.h"

namespace POSObjectParserUtils {

// Writes value and a line end: a whole number when it is one of 32 bits in single precision, with
// the digits that single precision leaves of it; else with five decimals. Not-a-number and infinity
// are written as words, which no reader takes for numbers. Throws CBIBError.
void WriteNumber(double value, BIB_T_NMT::CBIBPositionableStream const& stream);

// Writes value with so many decimals, at most five, and a line end. Throws CBIBError.
void WriteDecimals(double value, int decimals, BIB_T_NMT::CBIBPositionableStream const& stream);

} // namespace POSObjectParserUtils
