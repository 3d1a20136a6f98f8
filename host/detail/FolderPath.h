// How the host API gives folders.
#pragma once

#include <string>

namespace pdfsettings::detail {

// folder as an absolute path without slashes at its end, so that it is the parent of what is listed
// in it; empty for an empty one.
std::string FolderPath(std::string const& folder);

} // namespace pdfsettings::detail
