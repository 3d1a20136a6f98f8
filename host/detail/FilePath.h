// Paths, folders and names as the component takes and gives them, and objects of the platform
// services that they are converted by.
#pragma once

#include "platform/CFBase.h"

#include <memory>
#include <optional>
#include <string>
#include <type_traits>

namespace pdfsettings::detail {

struct CFReleaser {
    void operator()(CFTypeRef object) const noexcept { CFRelease(object); }
};

// An owned object, such as CFRef<CFStringRef>; null for none.
template <class Ref>
using CFRef = std::unique_ptr<std::remove_pointer_t<Ref>, CFReleaser>;

// folder as an absolute path without slashes at its end, so that it is the parent of what is listed
// in it; empty for an empty one.
std::string FolderPath(std::string const& folder);

// A name in UTF-8 as the component takes it; nothing for one that Mac Roman cannot hold, which no
// property list can speak of. Throws std::bad_alloc.
std::optional<std::string> ToComponent(std::string const& application);

// The other way round; every text has a meaning. Throws std::bad_alloc.
std::string FromComponent(std::string const& application);

} // namespace pdfsettings::detail
