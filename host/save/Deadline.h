// Waiting for others, up to a limit.
#pragma once

#include <chrono>

namespace pdfsettings::detail {

// The end of a waiting, and its pauses, which grow from one to twenty milliseconds.
class Deadline {
public:
    explicit Deadline(std::chrono::milliseconds limit)
        : fEnd(std::chrono::steady_clock::now() + limit) {}

    // Sleeps until the next attempt; false, at once, when the time is over.
    bool Pause();

private:
    std::chrono::steady_clock::time_point fEnd;
    std::chrono::milliseconds fPause{1};
};

} // namespace pdfsettings::detail
