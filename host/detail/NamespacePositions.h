// The positions in findings about OtherNamespaces.
#pragma once

#include "host/detail/Bindings.h"
#include "pdfsettings/Finding.h"
#include "pdfsettings/Value.h"

#include <vector>

namespace pdfsettings::detail {

// The component leaves out the elements of OtherNamespaces that it does not judge before it counts
// them. Makes the positions in findings those of settings, which were judged. Throws Error.
void RestorePositions(
    Bindings const& tables, Dictionary const& settings, std::vector<Finding>& findings);

} // namespace pdfsettings::detail
