// Files that interrupted saves left behind.
#pragma once

#include "host/save/SystemCalls.h"

#include <string>
#include <vector>

namespace pdfsettings::detail {

// Deletes the hidden files of earlier saves in folder that hold one of these contents: nothing is
// lost with them. What holds anything else may be the only copy of a change; it stays, and goes
// into *warnings by its name. Never throws but for memory: what cannot be looked at stays.
// Looks at a few only, so that nobody can make a save long by leaving many.
// REQUIRES: the folder is locked, unless contents is empty.
void RemoveLeftovers(
    Descriptor const& folder,
    std::vector<std::string> const& contents,
    std::vector<std::string>* warnings);

} // namespace pdfsettings::detail
