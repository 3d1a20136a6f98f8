// Suggestions for misspelled words.
#pragma once

#include <span>
#include <string>

namespace pdfsettings::detail {

// The one of choices that word is probably a misspelling of; empty if none is.
std::string Nearest(std::string const& word, std::span<std::string const> choices);

} // namespace pdfsettings::detail
