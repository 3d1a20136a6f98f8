// Which word is meant by a misspelled one.
#pragma once

#include <span>
#include <string>

namespace pdfsettings::detail {

// The one of choices that word may be a misspelling of; empty for none.
std::string Nearest(std::string const& word, std::span<std::string const> choices);

} // namespace pdfsettings::detail
