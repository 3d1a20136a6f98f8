// How much of the thread's stack is left, for code that recurses with its input.
#pragma once

#include <cstdint>

namespace platform {

// Watches the stack of the current thread while it lives; such objects nest. Costs a system call
// for the first one on a thread.
class StackWatch {
public:
    StackWatch() noexcept;
    ~StackWatch();
    StackWatch(StackWatch const&) = delete;
    StackWatch& operator=(StackWatch const&) = delete;

    // Whether the caller may go one level deeper: enough is left for one level, for everything that
    // is called from it, and for an exception on its way out. REQUIRES: a StackWatch lives on this
    // thread.
    static bool HasRoom() noexcept;

private:
    std::uintptr_t fOuterLimit;
};

} // namespace platform
