// What every fuzz target does with a broken promise.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace fuzz {

// Ends the run, with the reason, unless holds.
inline void Require(bool holds, std::string const& what) {
    if (!holds) {
        std::fprintf(stderr, "%s\n", what.c_str());
        std::abort();
    }
}

} // namespace fuzz
