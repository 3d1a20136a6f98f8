#include "platform/StackRoom.h"

#include <pthread.h>

namespace platform {

namespace {

// What must stay free below the deepest level.
constexpr std::uintptr_t kReserve = std::uintptr_t{64} * 1024;

// What is taken for granted on a stack whose bounds are unknown, such as that of a coroutine.
constexpr std::uintptr_t kAssumedRoom = std::uintptr_t{128} * 1024;

struct Bounds {
    std::uintptr_t fLow;
    std::uintptr_t fHigh;
};

// Stacks grow down: no address below this one may be reached. 0 outside every watch.
thread_local std::uintptr_t gLimit = 0;

// Those of the thread; both 0 before they are known.
thread_local Bounds gBounds = {0, 0};

Bounds AskForBounds() noexcept {
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) {
        return {0, 0};
    }
    void* low = nullptr;
    std::size_t size = 0;
    bool const known = pthread_attr_getstack(&attributes, &low, &size) == 0;
    pthread_attr_destroy(&attributes);
    auto const start = reinterpret_cast<std::uintptr_t>(low);
    return known ? Bounds{start, start + size} : Bounds{0, 0};
}

std::uintptr_t CurrentAddress() noexcept {
    return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
}

} // namespace

StackWatch::StackWatch() noexcept : fOuterLimit(gLimit) {
    if (gBounds.fHigh == 0) {
        gBounds = AskForBounds();
    }
    std::uintptr_t const here = CurrentAddress();
    bool const known = here >= gBounds.fLow && here < gBounds.fHigh;
    gLimit = known ? gBounds.fLow + kReserve : here - kAssumedRoom;
}

StackWatch::~StackWatch() {
    gLimit = fOuterLimit;
}

bool StackWatch::HasRoom() noexcept {
    return CurrentAddress() > gLimit;
}

} // namespace platform
