// Every procedure of the component, and its start, while the n-th allocation or the n-th stream
// operation of the runtime fails, alone and with all later ones.

#include "tests/support/FaultSweep.h"

namespace support {

class OutOfMemory : public FaultSweepTest {};

TEST_F(OutOfMemory, LeavesSettingsAsTheyAre) {
    CheckReadingCalls([&](Call const& call) { ExpectCleanFailures(kAllocations, call); });
}

TEST_F(OutOfMemory, ChangesAllOrNothing) {
    CheckChangingCall([&](Call const& call) { ExpectCleanFailures(kAllocations, call); });
}

TEST_F(OutOfMemory, MakesNoSettings) {
    CheckMakingCalls([&](Call const& call) { ExpectLeaks(kAllocations, call, 4); });
}

TEST_F(OutOfMemory, MakesSettingsChangedThatCannotBeCompared) {
    PDFSettings* const settings = fNewFromFile(fPath, kSchema);
    AddRef(settings);
    ExpectCleanFailures(kAllocations, {[&](auto const&) { return fIsDirty(settings) == 0; }});
    Release(settings);
}

TEST_F(OutOfMemory, WritesAllOrNothing) {
    CheckWritingCalls([&](Call const& call) { ExpectCleanFailures(kAllocations, call); });
}

TEST_F(OutOfMemory, GivesNoFolderAndShorterLists) {
    ExpectCleanFailures(kAllocations, GettingFolder(Reports::kAny));
    ExpectCleanFailures(kAllocations, GettingList());
}

TEST_F(OutOfMemory, OfStreamsMakesNoSettings) {
    BIBPositionableStream* const stream = NewStream(kText);
    ExpectCleanFailures(kStreams, Giving([&] { return fNewFromStream(stream, kSchema); }));
    ExpectCleanFailures(kStreams, Giving([&] { return fNewFromFile(fPath, kSchema); }));
    Release(stream);
}

TEST_F(OutOfMemory, OfStreamsWritesAllOrNothing) {
    CheckWritingCalls([&](Call const& call) { ExpectCleanFailures(kStreams, call, 0); });
}

TEST_F(OutOfMemory, OfAStartLeavesNothing) {
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
