// Leaks that a test expects.
#pragma once

// Of the sanitizer for leaks; null in programs without it.
extern "C" {
void __lsan_disable() __attribute__((weak));
void __lsan_enable() __attribute__((weak));
}

namespace support {

// While one lives, the sanitizer forgives what is allocated and never freed.
class ExpectedLeaks {
public:
    ExpectedLeaks() { __lsan_disable != nullptr ? __lsan_disable() : void(); }
    ~ExpectedLeaks() { __lsan_enable != nullptr ? __lsan_enable() : void(); }
    ExpectedLeaks(ExpectedLeaks const&) = delete;
    ExpectedLeaks& operator=(ExpectedLeaks const&) = delete;
};

} // namespace support
