#include "platform/StackRoom.h"

#include <algorithm>
#include <limits>
#include <pthread.h>
#include <sys/random.h>
#include <sys/resource.h>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

// What must stay free below the deepest level.
constexpr std::uintptr_t kReserve = std::uintptr_t{64} * 1024;

// How far the main thread goes down where its stack may not grow as far as its limit.
constexpr std::uintptr_t kGrownRoom = std::uintptr_t{640} * 1024;

// The settings themselves, and more levels than real ones have: for them no question to the system
// is worth its time.
constexpr unsigned long kLevelsOnAnyStack = 1 + 32;

// The thread's own stack; all zero until queried.
struct Stack {
    std::uintptr_t fLow;
    std::uintptr_t fHigh;
    bool fIsMain; // grows when it is used
};
thread_local Stack gStack = {};

thread_local unsigned long gLevels = 0;
// Stacks grow down: no level may begin at or below this address; 0 until it is needed.
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

// In bytes; the largest number for no limit.
std::uintptr_t LimitOf(decltype(RLIMIT_AS) resource) noexcept {
    rlimit limit{};
    return getrlimit(resource, &limit) == 0 ? limit.rlim_cur : RLIM_INFINITY;
}

// Whether the main thread's stack reaches so many bytes down from here, or can grow so far. For the
// program itself, a stack that cannot grow is the end; a system call gets an error.
bool Reaches(std::uintptr_t distance) noexcept {
    return getrandom(static_cast<char*>(__builtin_frame_address(0)) - distance, 1, GRND_NONBLOCK) ==
           1;
}

// The lowest address that the caller may use of the main thread's stack. The limit of its size may
// have been lowered since the thread began, to less than is in use even, and a limit on the memory
// of the process counts at the moment when the stack grows.
std::uintptr_t LowestOnMainStack(Stack const& stack) noexcept {
    std::uintptr_t const here = CurrentAddress();
    std::uintptr_t const size = stack.fHigh - stack.fLow;
    std::uintptr_t const allowed = stack.fHigh - std::min(size, LimitOf(RLIMIT_STACK));
    std::uintptr_t const near = std::max(stack.fLow, here - kGrownRoom);
    bool const hasMemory = LimitOf(RLIMIT_AS) == RLIM_INFINITY;
    if (hasMemory && allowed <= near) {
        return allowed;
    }
    if (Reaches(here - near)) {
        return near;
    }
    return hasMemory ? allowed : here;
}

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
    if (gLimit == 0) {
        gLimit = FindLimit();
    }
    return CurrentAddress() > gLimit;
}

} // namespace platform
