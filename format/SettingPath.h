// Paths of values in nested settings: keys, and positions from 0, joined by slashes. A slash at the
// beginning of a key is part of it, as in a file: "A//B" is the key "/B" in A.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace format {

// The first and the last part of a path.
std::string_view FirstPart(std::string_view path) noexcept;
std::string_view LastPart(std::string_view path) noexcept;

// The path without its last part; empty if it has one part.
std::string_view ParentPath(std::string_view path) noexcept;

// The path of the rule for a value: each position is replaced by "*", as in
// "OtherNamespaces/*/Namespace".
std::string RulePath(std::string_view path);

// The position that part is; nothing if it is not a position.
std::optional<std::size_t> PositionIn(std::string_view part) noexcept;

} // namespace format
