// A place that can be made to fail on demand, and that counts how often it was passed. For tests.
#pragma once

#include <atomic>
#include <limits>

namespace bibrt {

// Thread safe.
class FailurePoint {
public:
    // Counts an attempt. True when it is to fail.
    bool Attempt() noexcept {
        unsigned long const number = ++fAttempts;
        unsigned long const first = fFirst;
        return number == first || (number > first && fAllLater);
    }

    // The attempts so far.
    unsigned long Count() const noexcept { return fAttempts; }

    // Makes the n-th attempt from now fail, or it and all later ones.
    void Arm(unsigned long n, bool andAllLater) noexcept {
        fAllLater = andAllLater;
        fFirst = Count() + n;
    }

    // Lets every attempt succeed.
    void Disarm() noexcept {
        fFirst = kNever;
        fAllLater = false;
    }

private:
    static constexpr unsigned long kNever = std::numeric_limits<unsigned long>::max();

    std::atomic<unsigned long> fAttempts = 0;
    std::atomic<unsigned long> fFirst = kNever;
    std::atomic<bool> fAllLater = false;
};

// Where allocations and stream operations are counted and made to fail, in builds with
// PDFSETTINGS_FAILURE_HOOKS. In others nothing fails on demand and nothing is left of this.
#ifdef PDFSETTINGS_FAILURE_HOOKS
extern FailurePoint gAllocationPoint;
extern FailurePoint gStreamPoint;
#else
struct NeverFails {
    static constexpr bool Attempt() noexcept { return false; }
};
inline NeverFails gAllocationPoint;
inline NeverFails gStreamPoint;
#endif

} // namespace bibrt
