// Patterns of keys and paths.
#pragma once

#include <string_view>

namespace pdfsettings::detail {

bool IsPattern(std::string_view text) noexcept;

// Whether text matches a pattern, in any letter case and in British or American spelling: * is any
// text, ? any byte.
bool MatchesPattern(std::string_view pattern, std::string_view text);

// As above, but in this letter case and spelling, as keys in files are compared.
bool MatchesAsWritten(std::string_view pattern, std::string_view text);

} // namespace pdfsettings::detail
