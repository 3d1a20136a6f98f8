// How much of the thread's stack is left, for code that recurses with its input.
#pragma once

#include <cstdint>

namespace platform {

// Bounds the recursion of one piece of work on the current thread, while it lives; such objects
// nest. How far the stack reaches is asked for in each piece of work that goes deep: what lets a
// stack grow may change at any time.
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

// One level of recursion on the current thread, while it lives. REQUIRES: a StackWatch lives on
// this thread.
class StackLevel {
public:
    StackLevel() noexcept;
    ~StackLevel();
    StackLevel(StackLevel const&) = delete;
    StackLevel& operator=(StackLevel const&) = delete;

    // Whether there is room for this level, for everything that is called from it, and for an
    // exception on its way out. There is for the outermost level below a watch and 32 more on any
    // stack, which must have 64 KiB for them; and for more on the thread's own stack, not on
    // another one, such as a coroutine's.
    bool HasRoom() const noexcept;
};

} // namespace platform
