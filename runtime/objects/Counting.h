// Counts that several threads may change.
#pragma once

#include <atomic>

namespace bibrt {

// Takes one reference off if there is any; how many there were.
inline long TakeOne(std::atomic_ref<long> refs) noexcept {
    long before = refs.load(std::memory_order_acquire);
    while (before > 0 &&
           !refs.compare_exchange_weak(before, before - 1, std::memory_order_acq_rel)) {
    }
    return before;
}

// A number of things or events.
class Counter {
public:
    // Counts one more and gives the number that makes.
    unsigned long Up() noexcept { return fCount.fetch_add(1, std::memory_order_relaxed) + 1; }
    void Down() noexcept { fCount.fetch_sub(1, std::memory_order_relaxed); }

    unsigned long Get() const noexcept { return fCount.load(std::memory_order_relaxed); }

private:
    std::atomic<unsigned long> fCount = 0;
};

} // namespace bibrt
