// Every procedure of the component while what it needs fails: memory and streams of the runtime,
// the making of containers and streams, and the system's calls for files.

#include "tests/support/ExpectedLeaks.h"
#include "tests/support/FaultSweep.h"
#include "tests/support/FaultyRuntime.h"
#include "tests/support/SystemFaults.h"

namespace support {

namespace {

constexpr Resource kAllocations{&bibrt::CountAllocations, [](unsigned long n, bool andAllLater) {
                                    n == 0 ? bibrt::ResetFailures()
                                           : bibrt::FailAllocation(n, andAllLater);
                                }};

constexpr Resource kStreams{&bibrt::CountStreamOperations, [](unsigned long n, bool andAllLater) {
                                n == 0 ? bibrt::ResetFailures()
                                       : bibrt::FailStreamOperation(n, andAllLater);
                            }};

// Of a runtime that the component has to look up anew.
constexpr Resource kContainers{
    [] { return FaultyRuntime::fFaults.Count(); },
    [](unsigned long n, bool andAllLater) {
        n == 0 ? FaultyRuntime::fFaults.Disarm() : FaultyRuntime::fFaults.Arm(n, andAllLater);
    },
    &FaultyRuntime::MakeStale};

constexpr Resource kSystem{&CountSystemCalls, &FailSystemCall};

} // namespace

// The runtime is there before the component starts on it.
class Failures : private FaultyRuntime, public FaultSweepTest {
protected:
    Failures() : FaultSweepTest(&LookupDouble::Lookup) {}
};

TEST_F(Failures, LeaveSettingsAsTheyAre) {
    auto* const refused = NewValue<POSDict>("< A (no number) >");
    auto* const same = NewValue<POSDict>("< A 1 >");
    for (Resource const& resource : {kAllocations, kContainers}) {
        ExpectCleanFailures(resource, Giving([&] { return fIsPDFSettingsValid(fSettings); }));
        ExpectCleanFailures(resource, Giving([&] { return fSetSettings(fSettings, refused); }));
        ExpectCleanFailures(resource, Giving([&] { return fSetSettings(fSettings, same); }));
    }
    Release(refused);
    Release(same);
}

TEST_F(Failures, ChangeAllOrNothing) {
    auto* const changes = NewValue<POSDict>("< A 2 B [ ] New x >");
    PDFSettings* settings = nullptr;
    auto const set = [&](auto const& endFaults) {
        POSArray* const errors = fSetSettings(settings, changes);
        endFaults();
        AddRef(errors);
        Release(errors);
        EXPECT_EQ(errors != nullptr, Text(settings) != fBefore);
        Release(settings);
        return errors != nullptr;
    };
    for (Resource const& resource : {kAllocations, kContainers}) {
        ExpectCleanFailures(resource, {set, [&] { settings = NewSettings(kText, kSchema); }});
    }
    Release(changes);
}

// Where only their container fails, the object that was to go into it cannot be freed.
TEST_F(Failures, MakeNoSettings) {
    ExpectedLeaks const leaks;
    fIsLeaky = true;
    BIBPositionableStream* const stream = NewStream(kText);
    auto* const dict = NewValue<POSDict>("< A 1 >");
    for (auto const& [resource, lost] : {std::pair(kAllocations, 4), {kContainers, 2}}) {
        ExpectLeaks(resource, Giving([&] { return fNewFromStream(stream, kSchema); }), lost);
        ExpectLeaks(resource, Giving([&] { return fNewFromDict(dict, kSchema); }), lost);
        ExpectLeaks(resource, Giving([&] { return fNewFromFile(fPath, kSchema); }), lost);
    }
    Release(dict);
    ExpectCleanFailures(kStreams, Giving([&] { return fNewFromStream(stream, kSchema); }));
    ExpectCleanFailures(kStreams, Giving([&] { return fNewFromFile(fPath, kSchema); }));
    ExpectCleanFailures(kSystem, Giving([&] { return fNewFromFile(fPath, kSchema); }));
    Release(stream);
}

TEST_F(Failures, MakeNoSettingsFromFilesOfTheCurrentFolder) {
    std::filesystem::path const before = std::filesystem::current_path();
    std::filesystem::current_path(fFolder.Path());
    BIBSharedBuffer* const path = NewPath(u"a");
    ExpectCleanFailures(kSystem, Giving([&] { return fNewFromFile(path, kSchema); }));
    fRuntime.Buffers().Release(path);
    std::filesystem::current_path(before);
}

TEST_F(Failures, MakeSettingsChangedThatCannotBeCompared) {
    PDFSettings* const settings = fNewFromFile(fPath, kSchema);
    AddRef(settings);
    for (Resource const& resource : {kAllocations, kSystem}) {
        ExpectCleanFailures(resource, {[&](auto const&) { return fIsDirty(settings) == 0; }});
    }
    Release(settings);
}

// With a tail of their own and without. The writer keeps quiet where its text cannot be made: then
// the text is one that stands for that, and never a part.
TEST_F(Failures, WriteAllOrNothing) {
    struct Written {
        PDFSettings* fSettings;
        std::string fWhole;
        std::string fFailed;
    };
    PDFSettings* const plain = NewSettings("<</A 1 /B << /C (y) >> >>setalembicorparams");
    for (Written const& written :
         {Written{fSettings, fBefore, ""},
          Written{plain, Text(plain), "<<\r\n>> setpagedevice\r\n"}}) {
        Call const getText{[&](auto const& endFaults) {
            BIBPositionableStream* const stream = fGetJobOptionsData(written.fSettings);
            endFaults();
            std::string const text = stream == nullptr ? "" : ReadAll(stream);
            EXPECT_TRUE(text == written.fWhole || text == written.fFailed || stream == nullptr)
                << text;
            return stream != nullptr;
        }};
        Call const write = Writing(written.fSettings, [&](bool isDone, std::string const& bytes) {
            EXPECT_TRUE(bytes == written.fWhole || bytes == (isDone ? written.fFailed : "old"))
                << bytes;
        });
        for (auto const& [resource, atLeast] :
             {std::pair(kAllocations, 2), {kContainers, 2}, {kStreams, 0}}) {
            ExpectCleanFailures(resource, getText, atLeast);
            ExpectCleanFailures(resource, write, atLeast);
        }
    }
    Release(plain);
}

// The old file goes before the new one is made, and a new one that cannot be made whole goes too,
// unless nothing works any more.
TEST_F(Failures, OfTheSystemLeaveNoPartOfAFile) {
    ExpectCleanFailures(kSystem, Writing(fSettings, [&](bool isDone, std::string const& bytes) {
                            bool const isGone = bytes == "(gone)" || (bytes.empty() && fIsLasting);
                            EXPECT_TRUE(bytes == fBefore || (!isDone && (bytes == "old" || isGone)))
                                << bytes;
                        }));
}

TEST_F(Failures, GiveNoFolderAndShorterLists) {
    for (Resource const& resource : {kAllocations, kContainers, kSystem}) {
        ExpectCleanFailures(resource, GettingList());
    }
    ExpectCleanFailures(kAllocations, GettingFolder());
    ExpectCleanFailures(kSystem, GettingFolder(), 0);
    // Without a folder in the environment, that of the password database is the user's.
    EnvironmentVariable const home("HOME", nullptr);
    SetHomeInDatabase(fFolder.Path());
    ExpectCleanFailures(kSystem, GettingFolder(), 1);
    SetHomeInDatabase("");
}

TEST_F(Failures, OfAStartLeaveNothing) {
    fComponent.Terminate();
    bibrt::LiveCounts const live = bibrt::CountLive();
    int failures = 0;
    for (bool const andAllLater : {false, true}) {
        bool isReached = true;
        for (unsigned long n = 1; isReached; ++n) {
            unsigned long const start = bibrt::CountAllocations();
            bibrt::FailAllocation(n, andAllLater);
            bool const isStarted = fComponent.Initialize(&BIBRuntimeLookup) == 1;
            isReached = bibrt::CountAllocations() - start >= n;
            bibrt::ResetFailures();
            failures += isStarted ? 0 : 1;
            fComponent.Terminate();
            EXPECT_EQ(live, bibrt::CountLive()) << n;
        }
    }
    EXPECT_GT(failures, 1);
    EXPECT_EQ(1, fComponent.Initialize(&BIBRuntimeLookup));
}

} // namespace support
