// Ownership of objects of the platform services.
#pragma once

#include "platform/CFBase.h"

#include <memory>
#include <type_traits>

namespace pdfsettings::detail {

struct CFReleaser {
    void operator()(CFTypeRef object) const noexcept { CFRelease(object); }
};

// An owned object, such as CFRef<CFStringRef>; null for none.
template <class Ref>
using CFRef = std::unique_ptr<std::remove_pointer_t<Ref>, CFReleaser>;

} // namespace pdfsettings::detail
