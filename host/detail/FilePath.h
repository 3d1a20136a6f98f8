// Paths for the component, and what is wrong with a file.
#pragma once

#include "host/detail/Ref.h"

#include <string>

namespace pdfsettings::detail {

// path, which is UTF-8, as the component wants paths. Throws Error for one that is no UTF-8 or
// holds a NUL, and when memory runs out.
BufferRef MakePath(Bindings const& tables, std::string const& path);

// Why the file at path cannot be written, in the system's words, as far as that can be found out
// now.
std::string WhyUnwritable(std::string const& path);

} // namespace pdfsettings::detail
