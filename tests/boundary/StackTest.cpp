// How deep settings may be nested on stacks of all kinds: on one whose limit the host lowers, on
// one that cannot grow, and on a coroutine's.

#include "tests/support/Settings.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <malloc.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <ucontext.h>
#include <unistd.h>

namespace support {

namespace {

constexpr std::size_t kKiB = 1024;

// What must be free of a stack below a call, in KiB.
constexpr std::size_t kFree = 64;

// What sanitizers add to a stack and to a process is no use of the component's.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kIsSanitized = true;
#elif defined(__has_feature)
constexpr bool kIsSanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool kIsSanitized = false;
#endif

void Limit(decltype(RLIMIT_AS) resource, rlim_t limit) {
    rlimit now{};
    getrlimit(resource, &now);
    now.rlim_cur = limit;
    setrlimit(resource, &now);
}

// In bytes.
std::size_t AddressSpaceInUse() {
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

// Lets the heap have room for values without more memory from the system.
void FillHeap() {
    constexpr int kLarge = 64 << 20;
    mallopt(M_MMAP_THRESHOLD, kLarge / 2);
    mallopt(M_TRIM_THRESHOLD, kLarge * 2);
    void* blocks[16];
    for (void*& block : blocks) {
        block = malloc(kLarge / 16);
    }
    std::for_each(std::begin(blocks), std::end(blocks), &free);
}

// Does work that many bytes further down the stack.
template <class Work>
[[gnu::noinline]] void Deeper(std::size_t bytes, Work const& work) {
    char volatile page[4096];
    page[0] = 0;
    bytes > sizeof page ? Deeper(bytes - sizeof page, work) : work();
    page[1] = 0;
}

// Does work in a process of its own; its result, or false where the process was ended by a signal.
bool InProcess(std::function<bool()> const& work) {
    pid_t const process = fork();
    if (process == 0) {
        _exit(work() ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    int status = 0;
    waitpid(process, &status, 0);
    return status == 0;
}

// Does work on a stack of that size, with a closed page below it.
void OnCoroutine(std::size_t size, std::function<void()> work) {
    static std::function<void()> current;
    current = std::move(work);
    auto const page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* const memory =
        mmap(nullptr, page + size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(MAP_FAILED, memory);
    mprotect(memory, page, PROT_NONE);
    ucontext_t caller{};
    ucontext_t coroutine{};
    getcontext(&coroutine);
    coroutine.uc_stack.ss_sp = static_cast<char*>(memory) + page;
    coroutine.uc_stack.ss_size = size;
    coroutine.uc_link = &caller;
    makecontext(
        &coroutine, [] { current(); }, 0);
    swapcontext(&caller, &coroutine);
    munmap(memory, page + size);
}

} // namespace

class Stacks : public SettingsTest {
protected:
    static std::string Nested(std::size_t levels) {
        return "<< /A " + std::string(levels, '[') + " 1 " + std::string(levels, ']') +
               " >> setalembicorparams";
    }

    bool CanRead(BIBPositionableStream* text) const {
        return Own(fNewFromStream(text, "")) != nullptr;
    }

    // Whether a flat text and one of a thousand levels can be read so many bytes further down.
    bool CanReadAt(std::size_t depth) const {
        bool result = false;
        Deeper(depth, [&] { result = CanRead(fFlat) && CanRead(fThousand); });
        return result;
    }

    // Whether a text can be read and its settings be written again on a coroutine's stack.
    std::pair<bool, bool> OnSmallCoroutine(std::size_t levels) const {
        auto const text = NewStream(Nested(levels));
        auto const settings = NewSettings(Nested(levels));
        std::pair<bool, bool> result;
        OnCoroutine(kFree * kKiB, [&] {
            auto const written = Own(fGetJobOptionsData(settings));
            result = {CanRead(text), written != nullptr};
        });
        return result;
    }

    Owned<BIBPositionableStream> const fFlat = NewStream("<< /A 1 >> setalembicorparams");
    Owned<BIBPositionableStream> const fForty = NewStream(Nested(40)); // levels
    Owned<BIBPositionableStream> const fThousand = NewStream(Nested(1000));
    Owned<BIBPositionableStream> const fEndless = NewStream(Nested(100000));
};

// The first call asks for the bounds of the stack, but does not make it grow.
TEST_F(Stacks, MayBeLimitedAfterTheFirstCall) {
    EXPECT_TRUE(InProcess([&] {
        CanRead(fForty);
        Limit(RLIMIT_STACK, 512 * kKiB);
        return CanRead(fFlat) && (kIsSanitized || CanRead(fThousand)) && !CanRead(fEndless);
    }));
}

TEST_F(Stacks, MayBeDeeperThanALaterLimit) {
    EXPECT_TRUE(InProcess([&] {
        bool result = false;
        // So much is there below, but not more.
        Deeper((1024 + kFree) * kKiB, [] {});
        CanRead(fForty);
        Deeper(1024 * kKiB, [&] {
            Limit(RLIMIT_STACK, 512 * kKiB);
            result = CanRead(fFlat) && !CanRead(fEndless);
        });
        return result;
    }));
}

// Flat texts are still read, and nested ones while there is memory.
TEST_F(Stacks, MayBeUnableToGrow) {
    if (kIsSanitized) {
        GTEST_SKIP() << "no process of a sanitizer has so little memory";
    }
    EXPECT_TRUE(InProcess([&] {
        Limit(RLIMIT_AS, 4UL * kKiB * kKiB * kKiB);
        return CanReadAt(0) && CanReadAt(590 * kKiB) && CanReadAt(1200 * kKiB);
    }));
    EXPECT_TRUE(InProcess([&] {
        FillHeap();
        CanRead(fForty);
        Limit(RLIMIT_AS, AddressSpaceInUse());
        return CanRead(fFlat) && !CanRead(fEndless);
    }));
}

TEST_F(Stacks, OfCoroutinesTakeThirtyTwoLevels) {
    if (kIsSanitized) {
        GTEST_SKIP() << "the sanitizers know no exceptions on stacks that a program makes";
    }
    for (auto const& [levels, isTaken] : {std::pair(0U, true), {32, true}, {33, false}}) {
        EXPECT_EQ(std::pair(isTaken, isTaken), OnSmallCoroutine(levels)) << levels;
    }
}

} // namespace support
