// The component on a runtime whose containers and streams fail, and on a system whose files do.

#include "tests/support/EnvironmentVariable.h"
#include "tests/support/FaultSweep.h"
#include "tests/support/FaultyRuntime.h"
#include "tests/support/SystemFaults.h"

namespace support {

namespace {

constexpr Resource kRuntime{
    [] { return FaultyRuntime::gFaults.Count(); },
    [](unsigned long n, bool andAllLater) {
        n == 0 ? FaultyRuntime::gFaults.Disarm() : FaultyRuntime::gFaults.Arm(n, andAllLater);
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

TEST_F(RuntimeFaults, MakeNoSettings) {
    CheckMakingCalls([&](Call const& call) { ExpectFewLeaks(kRuntime, Stale(call)); });
}

TEST_F(RuntimeFaults, WriteAllOrNothing) {
    ExpectCleanFailures(kRuntime, Stale(WritingAllOrNothing()));
}

TEST_F(RuntimeFaults, GiveNoFolderAndShorterLists) {
    EnvironmentVariable const data("XDG_DATA_HOME", fFolder.Path().c_str());
    ExpectCleanFailures(kRuntime, Stale(GettingFolder()), 0);
    ExpectCleanFailures(kRuntime, Stale(GettingList()), 0);
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
    ExpectCleanFailures(kSystem, Writing([&](bool isDone, std::string const& bytes) {
                            bool const isGone = bytes == "(gone)" || (bytes.empty() && fIsLasting);
                            EXPECT_TRUE(bytes == fBefore || (!isDone && (bytes == "old" || isGone)))
                                << bytes;
                        }));
}

TEST_F(SystemFaults, GiveNoFolderAndShorterLists) {
    EnvironmentVariable const data("XDG_DATA_HOME", fFolder.Path().c_str());
    ExpectCleanFailures(kSystem, GettingFolder(), 0);
    ExpectCleanFailures(kSystem, GettingList(), 0);
}

} // namespace support
