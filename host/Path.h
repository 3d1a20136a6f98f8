// How one value inside nested settings is named.
#pragma once

#include "host/Value.h"

#include <string_view>

namespace pdfsettings {

// The value at a path of keys and array positions from 0, joined by slashes, as in
// "ColorImageDict/QFactor" or "OtherNamespaces/0/Namespace/1"; null when there is none. It is a
// part of settings. A slash that begins a key belongs to it, as it does in a file: "A//B" is the
// key "/B" in A.
Value const* Find(Dictionary const& settings, std::string_view path);

} // namespace pdfsettings
