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

// What must stay free below the deepest level.
constexpr std::uintptr_t kReserve = std::uintptr_t{64} * 1024;

// By how much the main thread's stack grows at once, and by less where it cannot.
constexpr std::uintptr_t kStep = std::uintptr_t{640} * 1024;

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

// Whether the stack of the main thread reaches so many bytes down from here, or can grow so far:
// the kernel alone knows all that may keep it from growing. For the program itself, a stack that
// cannot grow is the end; a system call gets an error. This one looks at the address and changes
// nothing.
bool Reaches(std::uintptr_t distance) noexcept {
    constexpr int kNoSuchChange = -1;
    constexpr std::size_t kMaskSize = 8; // of the kernel's signal masks
    char const* const address = static_cast<char*>(__builtin_frame_address(0)) - distance;
    int const outer = errno;
    syscall(SYS_rt_sigprocmask, kNoSuchChange, address, nullptr, kMaskSize);
    return std::exchange(errno, outer) == EINVAL;
}

// How low the main thread's stack goes now, in steps.
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
