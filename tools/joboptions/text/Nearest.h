// Did you mean …?
#pragma once

#include <string>
#include <vector>

namespace joboptions {

// The one of choices that word may be a misspelling of; empty for none.
std::string Nearest(std::string const& word, std::vector<std::string> const& choices);

// "; did you mean …?" with control bytes made visible; empty for nothing.
std::string MeantText(std::string const& meant);

} // namespace joboptions
