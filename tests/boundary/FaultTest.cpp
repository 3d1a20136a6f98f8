// The component on a runtime whose containers and streams fail, and on a system whose files do.

#include "tests/support/FaultSweep.h"
#include "tests/support/FaultyRuntime.h"
#include "tests/support/SystemFaults.h"

namespace support {

namespace {

constexpr Resource kRuntime{
    [] { return FaultyRuntime::fFaults.Count(); },
    [](unsigned long n, bool andAllLater) {
        n == 0 ? FaultyRuntime::fFaults.Disarm() : FaultyRuntime::fFaults.Arm(n, andAllLater);
    }};

constexpr Resource kSystem{&CountSystemCalls, &FailSystemCall};

} // namespace

// The runtime is there before the component starts on it.
class RuntimeFaults : private FaultyRuntime, public FaultSweepTest {
protected:
    RuntimeFaults() : FaultSweepTest(&LookupDouble::Lookup) {}

    // The same call, by a component that knows none of the runtime's tables and methods any more.
    static Call Stale(Call call) {
        auto const prepare = call.fPrepare;
        call.fPrepare = [prepare] {
            prepare();
            MakeStale();
        };
        return call;
    }
};

TEST_F(RuntimeFaults, LeaveSettingsAsTheyAre) {
    CheckReadingCalls([&](Call const& call) { ExpectCleanFailures(kRuntime, Stale(call)); });
}

TEST_F(RuntimeFaults, ChangeAllOrNothing) {
    CheckChangingCall([&](Call const& call) { ExpectCleanFailures(kRuntime, Stale(call)); });
}

TEST_F(RuntimeFaults, MakeNoSettings) {
    CheckMakingCalls([&](Call const& call) { ExpectLeaks(kRuntime, Stale(call), 2); });
}

TEST_F(RuntimeFaults, WriteAllOrNothing) {
    CheckWritingCalls([&](Call const& call) { ExpectCleanFailures(kRuntime, Stale(call)); });
}

TEST_F(RuntimeFaults, GiveShorterLists) {
    ExpectCleanFailures(kRuntime, Stale(GettingList()));
}

class SystemFaults : public FaultSweepTest {};

TEST_F(SystemFaults, MakeNoSettingsFromFiles) {
    ExpectCleanFailures(kSystem, Giving([&] { return fNewFromFile(fPath, kSchema); }));
}

TEST_F(SystemFaults, MakeSettingsChangedThatCannotBeCompared) {
    PDFSettings* const settings = fNewFromFile(fPath, kSchema);
    AddRef(settings);
    ExpectCleanFailures(kSystem, {[&](auto const&) { return fIsDirty(settings) == 0; }});
    Release(settings);
}

// The old file goes before the new one is made, and a new one that cannot be made whole goes too,
// unless nothing works any more.
TEST_F(SystemFaults, LeaveNoPartOfAFile) {
    ExpectCleanFailures(kSystem, Writing(fSettings, [&](bool isDone, std::string const& bytes) {
                            bool const isGone = bytes == "(gone)" || (bytes.empty() && fIsLasting);
                            EXPECT_TRUE(bytes == fBefore || (!isDone && (bytes == "old" || isGone)))
                                << bytes;
                        }));
}

TEST_F(SystemFaults, GiveNoFolderAndShorterLists) {
    ExpectCleanFailures(kSystem, GettingFolder(Reports::kAny), 0);
    ExpectCleanFailures(kSystem, GettingList());
}

// Without a folder in the environment, that of the password database is the user's.
TEST_F(SystemFaults, GiveNoFolderWithoutAHome) {
    EnvironmentVariable const home("HOME", nullptr);
    SetHomeInDatabase(fFolder.Path());
    ExpectCleanFailures(kSystem, GettingFolder(Reports::kAny), 1);
    SetHomeInDatabase("");
}

TEST_F(SystemFaults, MakeNoSettingsFromFilesOfTheCurrentFolder) {
    std::filesystem::path const before = std::filesystem::current_path();
    std::filesystem::current_path(fFolder.Path());
    BIBSharedBuffer* const path = NewBuffer(u"a");
    ExpectCleanFailures(kSystem, Giving([&] { return fNewFromFile(path, kSchema); }));
    fBuffers.Release(path);
    std::filesystem::current_path(before);
}

} // namespace support
