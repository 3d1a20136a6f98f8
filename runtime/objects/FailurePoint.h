// A place that can be made to fail on demand, and that counts how often it was passed.
#pragma once

#include <atomic>
#include <limits>

#include "runtime/objects/Counting.h"

namespace bibrt {

// Thread safe. The usual way past it is one addition and one comparison.
class FailurePoint {
public:
    // Counts an attempt. True when it is to fail.
    bool Attempt() noexcept {
        unsigned long const number = fAttempts.Up();
        unsigned long const first = fFirst.load(std::memory_order_relaxed);
        if (number < first) [[likely]] {
            return false;
        }
        return number == first || fAllLater.load(std::memory_order_relaxed);
    }

    // The attempts so far.
    unsigned long Count() const noexcept { return fAttempts.Get(); }

    // Makes the n-th attempt from now fail, or it and all later ones.
    void Arm(unsigned long n, bool andAllLater) noexcept {
        fAllLater.store(andAllLater, std::memory_order_relaxed);
        fFirst.store(Count() + n, std::memory_order_relaxed);
    }

    // Lets every attempt succeed.
    void Disarm() noexcept {
        fFirst.store(kNever, std::memory_order_relaxed);
        fAllLater.store(false, std::memory_order_relaxed);
    }

private:
    static constexpr unsigned long kNever = std::numeric_limits<unsigned long>::max();

    Counter fAttempts;
    std::atomic<unsigned long> fFirst{kNever};
    std::atomic<bool> fAllLater{false};
};

} // namespace bibrt
