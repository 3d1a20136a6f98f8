// From the runtime's values to plain ones.
#pragma once

#include "host/detail/Bindings.h"
#include "pdfsettings/Value.h"

namespace pdfsettings::detail {

// Deep copies. They throw Error when memory runs out and for a value of an unknown kind.
Dictionary ReadValues(Bindings const& tables, POSDict* dict);
Array ReadValues(Bindings const& tables, POSArray* array);

} // namespace pdfsettings::detail
