// A new file takes the place of an old one.
#pragma once

#include "host/save/Target.h"
#include "pdfsettings/SafeSave.h"

#include <optional>
#include <string>
#include <string_view>

namespace pdfsettings::detail {

// Makes bytes the contents of the target, under the lock on its folder. seen is what is to stand
// there now, or null where that does not matter. Throws as SaveSafely.
// REQUIRES: target is no stream.
SaveWarnings Replace(
    Target const& target,
    std::string_view bytes,
    std::optional<std::string> const* seen,
    SaveOptions const& options);

} // namespace pdfsettings::detail
