// An operation that tests can make fail, and that counts its attempts.
#pragma once

#include <atomic>
#include <limits>

namespace bibrt {

// Thread safe.
class FailurePoint {
public:
    // Counts an attempt. True if it must fail.
    bool Attempt() noexcept {
        unsigned long const number = ++fAttempts;
        unsigned long const first = fFirst;
        return number == first || (number > first && fAllLater);
    }

    // The number of attempts so far.
    unsigned long Count() const noexcept { return fAttempts; }

    // Makes the n-th attempt from now fail, where 1 is the next one, or this and all later ones.
    void Arm(unsigned long n, bool andAllLater) noexcept {
        fAllLater = andAllLater;
        fFirst = Count() + n;
    }

    // Makes every attempt succeed.
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

// Count allocations and stream operations, and inject failures into them, in builds with
// PDFSETTINGS_FAILURE_HOOKS. In other builds the calls compile to nothing.
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
