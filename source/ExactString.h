// Texts whose first character may be a byte order mark of its own.
#pragma once

#include <span>

#include "api/UnicodeEncoding.h"

namespace UnicodeEncodingNS {

// A 16-bit string of units, all of which belong to it, with a mark at its head as all strings have
// that are made of texts: one that begins with a mark keeps that too, and is not swapped. Throws
// CBIBError.
BIB_T_NMT::CPOSUnicodeString ExactString(std::span<unsigned short const> units);

} // namespace UnicodeEncodingNS
