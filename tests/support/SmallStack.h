// Threads with a stack of a size: one that is too small for recursion over deep values, and others.
#pragma once

#include <functional>
#include <gtest/gtest.h>
#include <pthread.h>
#include <utility>

namespace support {

// In bytes. The sanitizers know no larger stacks than 64 MiB.
inline constexpr unsigned long kSmallStack = 512UL * 1024;
inline constexpr unsigned long kLargeStack = 60UL * 1024 * 1024;

// Runs work on a thread with so much stack and waits for its end. work must not throw.
inline void OnStack(unsigned long size, std::function<void()> work) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, size), 0);
    pthread_t thread = 0;
    auto const run = [](void* argument) -> void* {
        (*static_cast<std::function<void()>*>(argument))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

inline void OnSmallStack(std::function<void()> work) {
    OnStack(kSmallStack, std::move(work));
}

} // namespace support
