// Names of applications, which the component takes in Mac Roman, as property lists are read.
#pragma once

#include <optional>
#include <string>

namespace pdfsettings::detail {

// A name in UTF-8 as the component takes it; nothing for one that Mac Roman cannot hold, which no
// property list can speak of. Throws Error for a NUL in it, and std::bad_alloc.
std::optional<std::string> ToComponent(std::string const& application);

// The other way round; every text has a meaning. Throws std::bad_alloc.
std::string FromComponent(std::string const& application);

} // namespace pdfsettings::detail
