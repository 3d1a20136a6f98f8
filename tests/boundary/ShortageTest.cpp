// Every procedure of the component, and its start, while the n-th allocation or the n-th stream
// operation of the runtime fails, alone and with all later ones.

#include "tests/support/EnvironmentVariable.h"
#include "tests/support/FaultSweep.h"

namespace support {

class Shortages : public FaultSweepTest {};

TEST_F(Shortages, LeaveSettingsAsTheyAre) {
    CheckReadingCalls([&](Call const& call) { ExpectCleanFailures(kAllocations, call); });
    // The live dictionary is there already.
    ExpectCleanFailures(kAllocations, Giving([&] { return fGetSettings(fSettings); }), 0);
}

TEST_F(Shortages, ChangeAllOrNothing) {
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

TEST_F(Shortages, MakeNoSettings) {
    CheckMakingCalls([&](Call const& call) { ExpectFewLeaks(kAllocations, call); });
}

TEST_F(Shortages, MakeSettingsChangedThatCannotBeCompared) {
    PDFSettings* const settings = fNewFromFile(fPath, kSchema);
    AddRef(settings);
    ExpectCleanFailures(kAllocations, {[&](auto const&) { return fIsDirty(settings) == 0; }});
    Release(settings);
}

TEST_F(Shortages, WriteAllOrNothing) {
    ExpectCleanFailures(kAllocations, WritingAllOrNothing());
}

TEST_F(Shortages, GiveNoFolderAndShorterLists) {
    EnvironmentVariable const data("XDG_DATA_HOME", fFolder.Path().c_str());
    ExpectCleanFailures(kAllocations, GettingFolder());
    ExpectCleanFailures(kAllocations, GettingList());
}

// A stream that fails before its text is read; one that fails while the text is written is
// swallowed, and leaves a text that no reader accepts.
TEST_F(Shortages, OfStreamsMakeNoSettingsAndNoWholeText) {
    BIBPositionableStream* const stream = NewStream(kText);
    ExpectCleanFailures(kStreams, Giving([&] { return fNewFromStream(stream, kSchema); }));
    Release(stream);
    auto const get = [&](auto const& endFaults) {
        BIBPositionableStream* const written = fGetJobOptionsData(fSettings);
        endFaults();
        std::string const text = written == nullptr ? "" : ReadAll(written);
        EXPECT_TRUE(text == fBefore || text.find("<<") == std::string::npos) << text;
        return written != nullptr;
    };
    EXPECT_EQ(0, Sweep(kStreams, {get}).fLeaks);
}

TEST_F(Shortages, OfAStartLeaveNothing) {
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
