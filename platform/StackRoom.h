// How much of the thread's stack is left, for code that recurses with its input.
#pragma once

#include <cstdint>

namespace platform {

// Bounds the recursion of one piece of work on the current thread, while it lives; such objects
// nest. The limit that the system sets for the main thread's stack is asked for each time, since a
// host may lower it. Costs a few system calls there, and on any thread for the first one.
class StackWatch {
public:
    StackWatch() noexcept;
    ~StackWatch();
    StackWatch(StackWatch const&) = delete;
    StackWatch& operator=(StackWatch const&) = delete;

private:
    std::uintptr_t fOuterLimit;
    unsigned long fOuterLevels;
    unsigned long fOuterDeepest;
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
    // exception on its way out. There always is for the outermost one below a watch, and on a stack
    // that is not the thread's own, such as that of a coroutine, for 32 more.
    bool HasRoom() const noexcept;
};

} // namespace platform
