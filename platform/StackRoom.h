// The remaining stack of the current thread, for code that recurses with its input.
#pragma once

#include <cstdint>

namespace platform {

// Bounds the recursion of one operation on the current thread while it lives. Watches nest. The
// limit is computed again for each operation that recurses deeply, since what lets a stack grow may
// change at any time.
class StackWatch {
public:
    StackWatch() noexcept;
    ~StackWatch();
    StackWatch(StackWatch const&) = delete;
    StackWatch& operator=(StackWatch const&) = delete;

private:
    unsigned long fOuterLevels;
    std::uintptr_t fOuterLimit;
};

// One level of recursion on the current thread while it lives. REQUIRES: a StackWatch lives on this
// thread.
class StackLevel {
public:
    StackLevel() noexcept;
    ~StackLevel();
    StackLevel(StackLevel const&) = delete;
    StackLevel& operator=(StackLevel const&) = delete;

    // Whether there is room for this level, for all calls from it, and for throwing an exception.
    // Always true for the outermost level below a watch and the next 32; any stack must have 64 KiB
    // for them. Deeper levels are measured: true while the thread's own stack has room, false on
    // another stack, such as a coroutine's.
    bool HasRoom() const noexcept;
};

} // namespace platform
