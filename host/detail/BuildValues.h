// From plain values to the runtime's.
#pragma once

#include "host/detail/Ref.h"
#include "pdfsettings/Value.h"

namespace pdfsettings::detail {

// A new dictionary with copies of all values. Throws Error when memory runs out, and for a NUL in a
// key, a word, the name of a binary type or a 16-bit text: the runtime ends all of these with one.
Ref<POSDict> BuildValues(Bindings const& tables, Dictionary const& values);

} // namespace pdfsettings::detail
