// UTF-16 to UTF-8, for texts that people read.
#pragma once

#include "runtime/objects/Memory.h"

namespace bibrt {

// Appends the length units in UTF-8; half of a surrogate pair becomes U+FFFD. Throws
// std::bad_alloc.
void AppendUtf8(String& out, unsigned short const* units, unsigned long length);

} // namespace bibrt
