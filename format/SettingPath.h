// How a value inside nested settings is named: by keys and positions from 0, joined by slashes. A
// slash that begins a key belongs to it, as it does in a file: "A//B" is the key "/B" in A.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace format {

// The first and the last part of a path.
std::string_view FirstPart(std::string_view path) noexcept;
std::string_view LastPart(std::string_view path) noexcept;

// The path without its last part; empty for a path of one part.
std::string_view ParentPath(std::string_view path) noexcept;

// The path of the rule for what stands at a path: each position is "*" there, as in
// "OtherNamespaces/*/Namespace".
std::string RulePath(std::string_view path);

// The position that a part names, if it is one.
std::optional<std::size_t> PositionIn(std::string_view part) noexcept;

} // namespace format
