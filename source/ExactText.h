// Texts whose first character may be a byte order mark of its own.
#pragma once

#include <span>

#include "api/UnicodeEncoding.h"

namespace UnicodeEncodingNS {

// The text of units, all of which belong to it: one that begins with a byte order mark keeps it,
// and is not swapped. Throws CBIBError.
Unicode16 ExactText(std::span<unsigned short const> units);

// The same text in UTF-8; an empty one when it holds half a character.
Unicode8 ExactText8(std::span<unsigned short const> units);

} // namespace UnicodeEncodingNS
