#include "platform/StackRoom.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

// The bytes that must stay free below the deepest level.
constexpr std::uintptr_t kReserve = std::uintptr_t{64} * 1024;

// The step in which the main thread's stack is tested for growth; halved where the stack cannot
// grow so far.
constexpr std::uintptr_t kStep = std::uintptr_t{640} * 1024;

// The settings themselves and 32 nested levels, more than real settings have: for these no system
// call is made.
constexpr unsigned long kLevelsOnAnyStack = 1 + 32;

// The bounds of the thread's own stack; all zero until queried.
struct Stack {
    std::uintptr_t fLow;
    std::uintptr_t fHigh;
    bool fIsMain; // the main thread's stack grows on use
};
thread_local Stack gStack = {};

thread_local unsigned long gLevels = 0;
// Stacks grow down: a level may not begin at or below this address. 0 until computed.
thread_local std::uintptr_t gLimit = 0;

std::uintptr_t CurrentAddress() noexcept {
    return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
}

Stack QueryStack() noexcept {
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) {
        return {};
    }
    void* low = nullptr;
    std::size_t size = 0;
    bool const isKnown = pthread_attr_getstack(&attributes, &low, &size) == 0;
    pthread_attr_destroy(&attributes);
    auto const start = reinterpret_cast<std::uintptr_t>(low);
    return isKnown ? Stack{start, start + size, gettid() == getpid()} : Stack{};
}

// Whether the main thread's stack reaches distance bytes below this frame, or can grow that far.
// Only the kernel knows all the limits on growth, and a program that touches a page that cannot be
// mapped is killed. A system call returns an error instead. rt_sigprocmask with an invalid
// operation reads the mask at the address, which makes the stack grow, and changes nothing: EINVAL
// means that the address could be read.
bool Reaches(std::uintptr_t distance) noexcept {
    constexpr int kNoSuchChange = -1;
    constexpr std::size_t kMaskSize = 8; // of the kernel's signal masks
    char const* const address = static_cast<char*>(__builtin_frame_address(0)) - distance;
    int const outer = errno;
    syscall(SYS_rt_sigprocmask, kNoSuchChange, address, nullptr, kMaskSize);
    return std::exchange(errno, outer) == EINVAL;
}

// The lowest address that the main thread's stack reaches, tested in steps; the current address if
// it cannot grow.
std::uintptr_t LowestOnMainStack(Stack const& stack) noexcept {
    std::uintptr_t const here = CurrentAddress();
    for (std::uintptr_t room = kStep; room > kReserve; room /= 2) {
        std::uintptr_t const low = std::max(stack.fLow, here - room);
        if (Reaches(here - low)) {
            return low;
        }
    }
    return here;
}

// Computes the limit. The bounds of the thread's stack are queried once for each thread. If they
// are unknown, or if the current frame is outside them, on another stack such as a coroutine's, the
// limit is the highest address: there is no room. On every thread but the main one, the stack is
// reserved in full, so the limit is its low end plus the reserve. The main thread's stack grows on
// use, and its low end only says how far it may grow at most: the kernel may refuse a page because
// memory is short, because the process's limit is lower now, or because another mapping is in the
// way. There the limit is the lowest address that is known to be reachable now, at most one step
// below the current frame, plus the reserve. HasRoom() computes the limit again when a frame
// reaches it, so the stack grows step by step.
std::uintptr_t FindLimit() noexcept {
    if (gStack.fHigh == 0) {
        gStack = QueryStack();
    }
    std::uintptr_t const here = CurrentAddress();
    if (here < gStack.fLow || here >= gStack.fHigh) {
        return std::numeric_limits<std::uintptr_t>::max();
    }
    return kReserve + (gStack.fIsMain ? LowestOnMainStack(gStack) : gStack.fLow);
}

} // namespace

StackWatch::StackWatch() noexcept
    : fOuterLevels(std::exchange(gLevels, 0)),
      fOuterLimit(std::exchange(gLimit, 0)) {}

StackWatch::~StackWatch() {
    gLevels = fOuterLevels;
    gLimit = fOuterLimit;
}

StackLevel::StackLevel() noexcept {
    ++gLevels;
}

StackLevel::~StackLevel() {
    --gLevels;
}

bool StackLevel::HasRoom() const noexcept {
    if (gLevels <= kLevelsOnAnyStack) {
        return true;
    }
    if (gLimit == 0 || CurrentAddress() <= gLimit) {
        gLimit = FindLimit();
    }
    return CurrentAddress() > gLimit;
}

} // namespace platform
