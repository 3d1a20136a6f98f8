// Every procedure of the component while what it needs fails: memory and streams of the runtime,
// and the system's calls for files. That it lives with any other row that fails is for the
// conformance kit to check.

#include "tests/support/ExpectedLeaks.h"
#include "tests/support/FaultSweep.h"
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

constexpr Resource kSystem{&CountSystemCalls, &FailSystemCall};

} // namespace

using Faults = FaultSweepTest;

TEST_F(Failures, LeaveSettingsAsTheyAre) {
    auto* const refused = NewValue<POSDict>("< A (no number) >");
    auto* const same = NewValue<POSDict>("< A 1 >");
    ExpectCleanFailures(kAllocations, Giving([&] { return fIsPDFSettingsValid(fSettings); }));
    ExpectCleanFailures(kAllocations, Giving([&] { return fSetSettings(fSettings, refused); }));
    ExpectCleanFailures(kAllocations, Giving([&] { return fSetSettings(fSettings, same); }));
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
    ExpectCleanFailures(kAllocations, {set, [&] { settings = NewSettings(kText, kSchema); }});
    Release(changes);
}

// Where only their container fails, the object that was to go into it cannot be freed.
TEST_F(Failures, MakeNoSettings) {
    ExpectedLeaks const leaks;
    fIsLeaky = true;
    BIBPositionableStream* const stream = NewStream(kText);
    auto* const dict = NewValue<POSDict>("< A 1 >");
    Call const fromStream = Giving([&] { return fNewFromStream(stream, kSchema); });
    Call const fromDict = Giving([&] { return fNewFromDict(dict, kSchema); });
    Call const fromFile = Giving([&] { return fNewFromFile(fPath, kSchema); });
    for (Call const& call : {fromStream, fromDict, fromFile}) {
        Swept const swept = Sweep(kAllocations, call);
        EXPECT_GT(swept.fFailures, 4);
        EXPECT_EQ(4, swept.fLeaks);
    }
    ExpectCleanFailures(kStreams, fromStream);
    ExpectCleanFailures(kStreams, fromFile);
    ExpectCleanFailures(kSystem, fromFile);
    Release(dict);
    Release(stream);
    // A file of the current folder, which has to be asked for.
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
        for (auto const& [resource, atLeast] : {std::pair(kAllocations, 2), {kStreams, 0}}) {
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

TEST_F(Faults, GiveNoFolderAndShorterLists) {
    for (Resource const& resource : {kAllocations, kSystem}) {
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
            failures += 1 - fComponent.Initialize(&BIBRuntimeLookup);
            isReached = bibrt::CountAllocations() - start >= n;
            bibrt::ResetFailures();
            fComponent.Terminate();
            EXPECT_EQ(live, bibrt::CountLive()) << n;
        }
    }
    EXPECT_GT(failures, 1);
    EXPECT_EQ(1, fComponent.Initialize(&BIBRuntimeLookup));
}

} // namespace support
