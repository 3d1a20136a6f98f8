// How long generated tests go on.
#pragma once

#include <cstdlib>

namespace support {

// So many rounds as usual, or as many times more as TEST_ROUNDS says.
inline int Rounds(int usual) {
    char const* const times = std::getenv("TEST_ROUNDS");
    return times == nullptr ? usual : usual * std::atoi(times);
}

} // namespace support
