// A thread whose stack is too small for recursion over deep values.
#pragma once

#include <functional>

#include <pthread.h>

#include <gtest/gtest.h>

namespace support {

// Runs work on a thread with 512 KiB of stack and waits for its end. work must not throw.
inline void OnSmallStack(std::function<void()> work) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, 512UL * 1024), 0);
    pthread_t thread = 0;
    auto const run = [](void* argument) -> void* {
        (*static_cast<std::function<void()>*>(argument))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

} // namespace support
