#include "host/save/Deadline.h"

#include <algorithm>
#include <thread>

namespace pdfsettings::detail {

namespace {

constexpr std::chrono::milliseconds kLongestPause(20);

} // namespace

bool Deadline::Pause() {
    auto const now = std::chrono::steady_clock::now();
    if (now >= fEnd) {
        return false;
    }
    std::this_thread::sleep_until(std::min(now + fPause, fEnd));
    fPause = std::min(2 * fPause, kLongestPause);
    return true;
}

} // namespace pdfsettings::detail
