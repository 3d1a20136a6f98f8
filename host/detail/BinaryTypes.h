// The type names of the component's binary data.
#pragma once

namespace pdfsettings::detail {

inline constexpr char const* kStringType = "JoboptionsString";
inline constexpr char const* kHexStringType = "JoboptionsUnicodeString";

} // namespace pdfsettings::detail
