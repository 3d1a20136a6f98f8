// Work on several threads at once.
#pragma once

#include <thread>
#include <vector>

namespace support {

// Calls work with 0, 1, … count - 1, each on a thread of its own, and waits for all.
template <class Work>
void DoTogether(int count, Work work) {
    std::vector<std::thread> threads;
    threads.reserve(static_cast<std::size_t>(count));
    for (int number = 0; number < count; ++number) {
        threads.emplace_back(work, number);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

} // namespace support
