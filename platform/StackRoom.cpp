#include "platform/StackRoom.h"

#include <algorithm>
#include <charconv>
#include <fcntl.h>
#include <limits>
#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include "platform/FileStatus.h"

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

// What the main thread uses of its stack where the process may have only so much memory.
constexpr std::uintptr_t kGrownRoom = std::uintptr_t{640} * 1024;

std::uintptr_t CurrentAddress() noexcept {
    return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
}

// The pages of address space that the process has; 0 where the system does not tell.
std::uintptr_t PagesUsed() noexcept {
    std::uintptr_t pages = 0;
    int const file = OpenPath(AT_FDCWD, "/proc/self/statm", O_RDONLY);
    if (file >= 0) {
        char text[32];
        ssize_t const size = read(file, text, sizeof text);
        std::from_chars(text, text + std::max<ssize_t>(size, 0), pages);
        close(file);
    }
    return pages;
}

// The bytes of address space that the process may still have; the largest number without a limit.
std::uintptr_t MemoryLeft() noexcept {
    rlimit limit{};
    if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) {
        return std::numeric_limits<std::uintptr_t>::max();
    }
    std::uintptr_t const used = PagesUsed() * static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    return limit.rlim_cur - std::min<std::uintptr_t>(limit.rlim_cur, used);
}

// Uses so many bytes of the stack below the caller.
[[gnu::noinline]] void Touch(std::uintptr_t bytes) noexcept {
    unsigned char volatile page[2048];
    page[0] = 0;
    if (bytes > sizeof page) {
        Touch(bytes - sizeof page);
    }
    page[sizeof page - 1] = 0;
}

// The stack of the main thread grows when it is used, and a process that may not have the memory is
// killed then. So where there is a limit, the stack grows at once, while there is memory for it,
// and no further.
std::uintptr_t LowestOnMainStack(std::uintptr_t low) noexcept {
    std::uintptr_t const left = MemoryLeft();
    if (left == std::numeric_limits<std::uintptr_t>::max()) {
        return low;
    }
    std::uintptr_t const here = CurrentAddress();
    std::uintptr_t const room = left > 4 * kGrownRoom ? kGrownRoom : 0;
    Touch(std::min(room, here - low));
    return std::max(low, here - room);
}

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
    if (!known) {
        return {0, 0};
    }
    return {gettid() == getpid() ? LowestOnMainStack(start) : start, start + size};
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
