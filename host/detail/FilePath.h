// Conversion of paths, folders and names between this library and the component, and owned objects
// of the platform services.
#pragma once

#include "platform/CFBase.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace pdfsettings::detail {

struct CFReleaser {
    void operator()(CFTypeRef object) const noexcept { CFRelease(object); }
};

// An owned object, such as CFRef<CFStringRef>, or null.
template <class Ref>
using CFRef = std::unique_ptr<std::remove_pointer_t<Ref>, CFReleaser>;

// folder as an absolute path without trailing slashes, so that it is equal to the parent path of
// its files; empty for an empty one.
std::string FolderPath(std::string const& folder);

// Whether a file of that name is listed; the hidden files of saves are not.
bool IsSettingsFileName(std::string_view name) noexcept;

// A name in UTF-8, converted for the component; nothing if Mac Roman cannot represent it, so that
// no property list can have it. Throws std::bad_alloc.
std::optional<std::string> ToComponent(std::string const& application);

// The reverse conversion, which is defined for all bytes. Throws std::bad_alloc.
std::string FromComponent(std::string const& application);

} // namespace pdfsettings::detail
