#include "pdfsettings/Component.h"

#include "api/BIBRuntime.h"
#include "host/detail/RunningComponent.h"
#include "pdfsettings/Settings.h"
#include "pdfsettings/raw/RawAccess.h"
#include "runtime/objects/Diagnostics.h"
#include "tests/support/Component.h"
#include "tests/support/ErrorOf.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <new>
#include <optional>
#include <sys/mman.h>
#include <thread>

using namespace pdfsettings;
using support::CodeOf;

namespace {

std::optional<Fault> StartCode() {
    return CodeOf([] { Component::Start(); });
}

// Whether the component validates.
bool IsUsable() {
    static Schema const kSchema = Schema::Parse("< PDFSettings < A number optional < > > >");
    return Settings::Parse("<</A 1>>setalembicorparams", kSchema).Validate().empty();
}

// What is destroyed last in a program may use the component once more.
struct Last {
    ~Last() {
        std::string const message =
            support::MessageOf([this] { detail::Turn const turn(fRunning); });
        std::fputs(message.c_str(), stderr);
    }

    std::shared_ptr<detail::RunningComponent> fRunning;
};

// Runs the component as a host does that knows nothing of this library.
class Host {
public:
    explicit Host(BIBLookupProc lookup = &BIBRuntimeLookup) {
        EXPECT_EQ(fComponent.Initialize(lookup), 1);
    }
    ~Host() { fComponent.Terminate(); }
    Host(Host const&) = delete;
    Host& operator=(Host const&) = delete;

    static bool IsRunning() {
        return BIBRuntimeLookup("PDFSettingsInterface", "IsDirty", "PDFSettingsIsDirtyProc") !=
               nullptr;
    }

private:
    support::Component fComponent;
};

// Makes the loader put a library elsewhere than where address was in it, once it is unloaded.
void OccupyPageOf(void* address) {
    constexpr std::uintptr_t kSize = 4096;
    char* const page =
        static_cast<char*>(address) - reinterpret_cast<std::uintptr_t>(address) % kSize;
    static_cast<void>(
        mmap(page, kSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0));
}

int gLookups = 0;

// A runtime of a host's own, as far as this library sees.
void* CountingLookup(char const* interfaceName, char const* procName, char const* procType) {
    ++gLookups;
    return BIBRuntimeLookup(interfaceName, procName, procType);
}

char const* gMissing = nullptr;

// A runtime without one procedure, with any for those of a component that is not started.
void* LookupWithoutOne(char const* interfaceName, char const* procName, char const* procType) {
    if (gMissing != nullptr && std::strcmp(procName, gMissing) == 0) {
        return nullptr;
    }
    return std::strncmp(interfaceName, "PDFSettings", 11) == 0
               ? reinterpret_cast<void*>(&LookupWithoutOne)
               : BIBRuntimeLookup(interfaceName, procName, procType);
}

// What is written where reports of the host go, when one is made.
std::string Reported() {
    testing::internal::CaptureStderr();
    reinterpret_cast<BIBReportErrorProc>(
        BIBRuntimeLookup("BIB", "BIBReportError", "BIBReportError"))("reported");
    return testing::internal::GetCapturedStderr();
}

} // namespace

TEST(Component, RunsOnceAtATimeAndMayBeStartedAgain) {
    for (int round = 0; round < 3; ++round) {
        std::optional<Component> running(Component::Start());
        EXPECT_EQ(running->Version(), 0x10400);
        EXPECT_EQ(StartCode(), Fault::kInUse);
        Component const shared = Component::Shared();
        running.reset();
        EXPECT_TRUE(IsUsable());
        EXPECT_EQ(StartCode(), Fault::kInUse) << "a handle is left";
    }
    EXPECT_EQ(StartCode(), std::nullopt);
    EXPECT_FALSE(Host::IsRunning());
}

// The thread that drops the last handle waits for the calls of others before it stops the
// component.
TEST(Component, StartsWhileAnotherThreadHasYetToStopTheFormerOne) {
    std::optional<Component> former(Component::Start());
    std::weak_ptr const seen = detail::RunningComponent::Shared();
    detail::CallsLock calls;
    std::unique_lock lock(calls);
    std::thread stopping([&] { former.reset(); });
    while (!seen.expired()) {
        std::this_thread::yield();
    }
    EXPECT_EQ(StartCode(), std::nullopt);
    lock.unlock();
    stopping.join();
}

// Started at first use, it runs until the program ends.
TEST(ComponentDeathTest, IsStartedAtFirstUseAndStopsBeforeTheProgramHasEnded) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            static Last last;
            last.fRunning = detail::RunningComponent::Shared();
            std::exit(IsUsable() && StartCode() == Fault::kInUse ? 0 : 1);
        },
        testing::ExitedWithCode(0),
        "the settings component has stopped: the program is ending");
}

// Whether the component starts; false also where there is no memory for the error.
static bool Starts() try { return !StartCode(); } catch (std::bad_alloc const&) {
    return false;
}

TEST(Component, StartsWholeOrNotAtAll) {
    bibrt::LiveCounts const live = bibrt::CountLive();
    int failures = 0;
    for (bool const andAllLater : {true, false}) {
        bool isReached = true;
        for (unsigned long n = 1; isReached; ++n) {
            unsigned long const start = bibrt::CountAllocations();
            bibrt::FailAllocation(n, andAllLater);
            failures += Starts() ? 0 : 1;
            isReached = bibrt::CountAllocations() - start >= n;
            bibrt::ResetFailures();
            EXPECT_EQ(live, bibrt::CountLive()) << n;
        }
    }
    EXPECT_GT(failures, 10);
    EXPECT_EQ(StartCode(), std::nullopt);
}

TEST(Component, AFileThatIsNoComponentIsRefused) {
    std::pair<char const*, std::string> const kCases[] = {
        {"/no/such/file.so", "cannot load the settings component: /no/such/file.so: "},
        {"/dev/null", "cannot load the settings component: /dev/null: "},
        {"libm.so.6", "libm.so.6 is not a settings component: it has no PDFSettingsTerminate"},
    };
    for (auto const& [path, message] : kCases) {
        auto const error = support::ErrorOf([&, &file = path] { Component::Start(file); });
        ASSERT_TRUE(error) << path;
        EXPECT_EQ(error->Code(), Fault::kComponent);
        EXPECT_TRUE(error->Message().starts_with(message)) << error->Message();
    }
    EXPECT_EQ(StartCode(), std::nullopt);
}

// What the host's own calls report goes where the host sends it.
TEST(Component, UsesOneThatAHostRunsAndNeverStopsIt) {
    std::optional<Host> host(std::in_place);
    EXPECT_EQ(StartCode(), Fault::kInUse);
    EXPECT_TRUE(IsUsable());
    EXPECT_EQ(CodeOf([] { Component::Shared().Version(); }), Fault::kComponent);
    EXPECT_NE(Reported(), "");
    {
        detail::Turn const turn;
        EXPECT_EQ(Reported(), "");
        detail::Turn const inner;
    }
    EXPECT_NE(Reported(), "");
    std::shared_ptr<detail::RunningComponent> const held = detail::RunningComponent::Shared();
    EXPECT_TRUE(Host::IsRunning());
    void* const code =
        BIBRuntimeLookup("PDFSettingsInterface", "NewFromFile", "PDFSettingsNewFromFileProc");
    host.reset();
    EXPECT_EQ(CodeOf([&] { detail::Turn const turn(held); }), Fault::kStopped);
    OccupyPageOf(code);
    host.emplace();
    EXPECT_TRUE(IsUsable());
    host.reset();
    EXPECT_EQ(StartCode(), std::nullopt);
}

TEST(Component, IsAttachedThroughTheLookupOfAHost) {
    EXPECT_EQ(CodeOf([] { RawAccess::Attach(&CountingLookup); }), Fault::kStopped);
    Host const host(&CountingLookup);
    {
        gLookups = 0;
        Component const component = RawAccess::Attach(&CountingLookup);
        EXPECT_GT(gLookups, 50);
        EXPECT_TRUE(IsUsable());
        EXPECT_EQ(CodeOf([] { RawAccess::Attach(&CountingLookup); }), Fault::kInUse);
    }
    EXPECT_TRUE(Host::IsRunning());
}

TEST(Bindings, AMissingRowIsNamed) {
    std::pair<char const*, char const*> const kCases[] = {
        {nullptr, ""},
        {"GetOffsetToPrimaryInstance",
         "missing procedure BIBContainerInterface/GetOffsetToPrimaryInstance of type "
         "BIBGetOffsetToPrimaryInstProc"},
        {"GetListofPDFSettings",
         "missing procedure PDFSettingsStatics/GetListofPDFSettings of type "
         "PDFSettingsGetListofPDFSettingsProc"},
    };
    for (auto const& [missing, message] : kCases) {
        gMissing = missing;
        EXPECT_EQ(
            support::MessageOf([] { detail::Bindings const bindings(&LookupWithoutOne); }),
            message);
    }
}

TEST(Bindings, AnObjectThatCannotBeOwnedIsDeleted) {
    gMissing = nullptr;
    detail::Bindings tables(&LookupWithoutOne);
    tables.containers.AddRef = [](BIBContainer* /*container*/) { return 0L; };
    EXPECT_THROW(detail::Share(tables, tables.dicts.NewPOSDict()), std::bad_alloc);
}
