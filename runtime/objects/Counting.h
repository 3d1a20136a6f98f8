// Counts that several threads may change.
//
// A locked instruction costs about as much as a call of the allocator. As long as the process has
// one thread, none is used; the C library tells, and what it tells changes only in calls that start
// a thread.
#pragma once

#include <atomic>
#include <mutex>
#include <sys/single_threaded.h>

namespace bibrt {

inline bool HasOneThread() noexcept {
    return __libc_single_threaded != 0;
}

// Adds to count and gives what it was before.
template <class Number>
Number AddTo(std::atomic_ref<Number> count, Number change) noexcept {
    if (HasOneThread()) {
        Number const before = count.load(std::memory_order_relaxed);
        count.store(before + change, std::memory_order_relaxed);
        return before;
    }
    return count.fetch_add(change, std::memory_order_relaxed);
}

// Takes one reference off if there is any; how many there were.
inline long TakeOne(std::atomic_ref<long> refs) noexcept {
    long before = refs.load(std::memory_order_acquire);
    // The last reference is nobody else's, and no locked instruction is needed for it.
    if (before == 1 || HasOneThread()) {
        refs.store(before > 0 ? before - 1 : before, std::memory_order_relaxed);
        return before;
    }
    while (before > 0 &&
           !refs.compare_exchange_weak(before, before - 1, std::memory_order_acq_rel)) {
    }
    return before;
}

// A number of things or events.
class Counter {
public:
    // Counts one more and gives the number that makes.
    unsigned long Up() noexcept { return AddTo(std::atomic_ref(fCount), 1UL) + 1; }
    void Down() noexcept { AddTo(std::atomic_ref(fCount), ~0UL); }

    unsigned long Get() const noexcept {
        return std::atomic_ref(fCount).load(std::memory_order_relaxed);
    }

private:
    mutable unsigned long fCount = 0; // std::atomic_ref takes no constant
};

// Holds mutex where there is another thread that it could keep out. REQUIRES: starts no thread.
class ThreadGuard {
public:
    explicit ThreadGuard(std::mutex& mutex) : fLock(mutex, std::defer_lock) {
        if (!HasOneThread()) {
            fLock.lock();
        }
    }

private:
    std::unique_lock<std::mutex> fLock;
};

} // namespace bibrt
