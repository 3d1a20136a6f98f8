#include "bib/BIBClient.h"

#include <algorithm>

#include "api/BIBCacheInterface.h"
#include "bib/BIBContainer.h"
#include "bib/BIBErrorTraits.h"
#include "bib/BIBMemory.h"
#include "bib/BIBStaticCache.h"
#include "bib/BIBStreamFactory.h"
#include "bib/BIBStringTraits.h"
#include "bib/BIBTable.h"
#include "bib/LazyTerminate.h"
#include "bib/POSDict.h"
#include "bib/POSDictIterator.h"
#include "bib/POSNumber.h"
#include "tests/support/BoundClient.h"
#include "tests/support/ErrorLog.h"

namespace BIB_T_NMT {

using support::BoundClientTest;
using support::LookupDouble;
using support::WhatItThrows;

using BIBClient = BoundClientTest;
using Containers = TBIBInterfaceClient<BIBContainerInterface>;

TEST(BIBClientUnbound, RefusesNullAndStopsHarmlessly) {
    BIBClientTerminate();
    EXPECT_FALSE(BIBClientInit(nullptr));
    EXPECT_EQ(nullptr, gGetProc);
    EXPECT_EQ(nullptr, BIBGetProcAddress("BIB", "BIBReportError", "BIBReportError"));
}

TEST(BIBClientUnbound, ReportsNothingBeforeTheErrorProcedureIsKnown) {
    support::ErrorLog const log;
    gErrorProc = nullptr;
    EXPECT_EQ(0, BIBReportError("lost"));
    EXPECT_TRUE(log.fMessages.empty());
}

TEST(BIBClientUnbound, CountsAFailedStartAsBound) {
    LookupDouble lookup;
    lookup.Hide("BIB.BIBIsMultiThreaded");
    EXPECT_FALSE(BIBClientInit(&LookupDouble::Lookup));
    EXPECT_TRUE(BIBClientInit(&LookupDouble::Lookup));
    BIBClientTerminate();
    EXPECT_EQ(nullptr, gGetProc);
}

TEST(BIBClientUnbound, ThrowsOutOfAStartWithoutMemoryInterface) {
    LookupDouble lookup;
    lookup.Hide("BIBMemoryInterface.Free");
    // Earlier tests of this process may have bound the table already.
    TBIBInterfaceClient<BIBMemoryInterface>::fCount = 0;
    EXPECT_EQ("Missing Interface", WhatItThrows([] { BIBClientInit(&LookupDouble::Lookup); }));
    BIBClientTerminate();
}

TEST_F(BIBClient, BindsOnceHoweverOftenItIsStarted) {
    auto const asked = fLookup.fAsked.size();
    EXPECT_TRUE(BIBClientInit(&BIBRuntimeLookup));
    EXPECT_EQ(&LookupDouble::Lookup, gGetProc);
    EXPECT_EQ(asked, fLookup.fAsked.size());
}

TEST_F(BIBClient, LoadsATableBackwardsAndStopsAtTheFirstGap) {
    constexpr _t_BIBFTabEntry kRows[] = {
        BIB_STREAM_FACTORY_INTERFACE_ROWS(BIB_TABLE_NAMES){"", ""}};
    fLookup.Hide("BIBStreamFactoryInterface.NewClientSimpleStream");
    int untouched = 0;
    void* procs[6] = {};
    std::fill(std::begin(procs), std::end(procs), &untouched);
    gFinishedInit = false;
    EXPECT_EQ(0, BIBLoadProcTable(kRows, 6, "BIBStreamFactoryInterface", procs, 0));
    gFinishedInit = true;
    for (int slot = 0; slot < 3; ++slot) {
        EXPECT_EQ(&untouched, procs[slot]) << slot;
    }
    EXPECT_EQ(nullptr, procs[3]);
    EXPECT_NE(nullptr, procs[4]);
    EXPECT_NE(nullptr, procs[5]);
    fLookup.Show("BIBStreamFactoryInterface.NewClientSimpleStream");
    EXPECT_EQ(1, BIBLoadProcTable(kRows, 6, "BIBStreamFactoryInterface", procs, 0));
    EXPECT_NE(&untouched, procs[0]);
}

TEST_F(BIBClient, RegistersRowsUpToTheFirstRefusal) {
    int procs[3] = {};
    _t_BIBFTabRegEntry const rows[] = {
        {"A", "T", procs}, {"A", "T", procs + 1}, {"B", "T", procs + 2}, {"", "", nullptr}};
    EXPECT_EQ(0, BIBRegisterProcTable(rows, 3, "ClientTestInterface"));
    EXPECT_EQ(procs, BIBRuntimeLookup("ClientTestInterface", "A", "T"));
    EXPECT_EQ(nullptr, BIBRuntimeLookup("ClientTestInterface", "B", "T"));
    EXPECT_EQ(1, BIBRegisterProcTable(rows + 2, 1, "ClientTestInterface"));
    BIBUnregisterInterface("ClientTestInterface");
    EXPECT_EQ(nullptr, BIBRuntimeLookup("ClientTestInterface", "A", "T"));
}

TEST_F(BIBClient, ThrowsAnEmptyMessageForAMissingNameOnceBound) {
    try {
        BIBGetProcAddress("No such", "name", "at all");
        FAIL();
    } catch (CBIBError const& error) {
        EXPECT_STREQ("", error.what());
        BIBError* const raw = error;
        EXPECT_STREQ(
            "BIB",
            GetProcs<BIBStringInterface>()->GetCString(
                TBIBInterfaceClient<BIBErrorInterface>::fProcTable.GetComponent(raw)));
        error.Release();
    }
}

TEST_F(BIBClient, ReloadsAStaleTableOnceAndOnlyWhenAsked) {
    auto const asked = fLookup.fAsked.size();
    MoveCounter();
    EXPECT_EQ(&Containers::fProcTable, GetProcs<BIBContainerInterface>());
    EXPECT_EQ(asked, fLookup.fAsked.size());
    Containers::CheckInterface();
    EXPECT_EQ(asked + 16, fLookup.fAsked.size());
    EXPECT_EQ(*gBIBUnregisterCount, Containers::fCount);
    Containers::CheckInterface();
    EXPECT_EQ(asked + 16, fLookup.fAsked.size());
}

TEST_F(BIBClient, TellsAMissingCoreInterfaceByTheState) {
    fLookup.Hide("BIBContainerInterface.GetSignature");
    MoveCounter();
    EXPECT_EQ("", WhatItThrows([] { Containers::CheckInterface(); }));
    gFinishedInit = false;
    EXPECT_EQ(nullptr, PeekProcs<BIBContainerInterface>());
    EXPECT_EQ("Missing Interface", WhatItThrows([] { Containers::CheckInterface(); }));
    gFinishedInit = true;
    fLookup.Show("BIBContainerInterface.GetSignature");
    Containers::CheckInterface();
}

TEST_F(BIBClient, ClearsTheFirstSlotOfAGlobalTableThatCannotBeBound) {
    ASSERT_NE(nullptr, GetGlobalPOSNumberInterfaceProcs());
    ASSERT_NE(nullptr, gPOSNumberInterface.NewPOSNumber);
    fLookup.Hide("POSNumberInterface.IsPOSNumber");
    MoveCounter();
    EXPECT_EQ("", WhatItThrows([] { GetGlobalPOSNumberInterfaceProcs(); }));
    gFinishedInit = false;
    EXPECT_EQ(nullptr, GetGlobalPOSNumberInterfaceProcs());
    EXPECT_EQ(nullptr, gPOSNumberInterface.NewPOSNumber);
    EXPECT_NE(nullptr, gPOSNumberInterface.Get);
    EXPECT_EQ("invalid container", WhatItThrows([] { CPOSNumber const number(1.0); }));
    gFinishedInit = true;
    fLookup.Show("POSNumberInterface.IsPOSNumber");
    EXPECT_EQ(1.0, CPOSNumber(1.0).Get());
}

TEST_F(BIBClient, MakesNoHandleWhileItsTableIsMissing) {
    CPOSDict const dict;
    POSDict* const raw = dict;
    for (char const* const row :
         {"POSDictInterface.DeepGet", "POSArrayInterface.SetAt", "POSDictIteratorInterface.Next"}) {
        fLookup.Hide(row);
    }
    MoveCounter();
    gFinishedInit = false;
    EXPECT_FALSE(CPOSDict(raw).IsValid());
    EXPECT_FALSE(CPOSDict(CPOSObject(dict), /*quiet=*/true).IsValid());
    EXPECT_EQ("downcast from CPOSObject to CPOSDict failed", WhatItThrows([&dict] {
                  CPOSDict const handle(CPOSObject(dict), /*quiet=*/false);
              }));
    EXPECT_EQ("invalid container", WhatItThrows([] { CPOSDict const handle; }));
    EXPECT_EQ("invalid container", WhatItThrows([] { CPOSArray const handle; }));
    EXPECT_EQ("invalid container", WhatItThrows([&] { CPOSDictIterator const handle(dict); }));
    gFinishedInit = true;
    for (char const* const row :
         {"POSDictInterface.DeepGet", "POSArrayInterface.SetAt", "POSDictIteratorInterface.Next"}) {
        fLookup.Show(row);
    }
    CPOSDict::GetProcs();
}

TEST_F(BIBClient, TurnsAStatusIntoAnError) {
    CBIBStringAtom const name("TestStatus");
    int instance = 0;
    bibrt::FailAllocation(1, /*andAllLater=*/false);
    EXPECT_EQ("out of memory", WhatItThrows([&] {
                  CBIBContainer::NewFullContainer(
                      &instance, name, nullptr, name, nullptr, nullptr, nullptr);
              }));
    TBIBSharedBuffer<unsigned char> const buffer(1, nullptr);
    ASSERT_TRUE(CBIBStreamFactory::Init());
    bibrt::FailAllocation(1, /*andAllLater=*/false);
    EXPECT_EQ("out of memory", WhatItThrows([&] { CBIBStreamFactory::NewBufferStream(buffer); }));
    bibrt::ResetFailures();
}

namespace {

class FailingStart : public LazyTerminate {
public:
    bool Initialize() override { return false; }
};

BIBError* NoCoreError(BRVErrorID /*id*/) {
    return nullptr;
}

} // namespace

TEST(BIBClientUnbound, FailsWhereALazyObjectOrTheUnknownErrorDoes) {
    LookupDouble lookup;
    {
        FailingStart const failing;
        EXPECT_FALSE(BIBClientInit(&LookupDouble::Lookup));
        BIBClientTerminate();
    }
    lookup.Replace("BIBErrorInterface.GetCoreError", &NoCoreError);
    TBIBInterfaceClient<BIBErrorInterface>::fCount = 0;
    EXPECT_FALSE(BIBClientInit(&LookupDouble::Lookup));
    BIBClientTerminate();
    TBIBInterfaceClient<BIBErrorInterface>::fCount = 0;
}

TEST_F(BIBClient, AsksForNoCacheAsLongAsThereIsNone) {
    EXPECT_EQ(nullptr, CBIBStaticCacheBase::GetfList().GetFirstElement());
    EXPECT_TRUE(CBIBStaticCacheBase::IsAcceptingCaches());
    for (auto const& row : fLookup.fAsked) {
        EXPECT_NE(0U, row.find("BIBCacheInterface")) << row;
    }
}

namespace {

class CountingCache : public CBIBStaticCacheBase {
public:
    void Clear() override { ++fCleared; }

    int fCleared = 0;
};

} // namespace

TEST(BIBStaticCache, IsPurgedByTheRuntimeAndEmptiedAtTheEnd) {
    LookupDouble lookup;
    CountingCache cache;
    ASSERT_TRUE(BIBClientInit(&LookupDouble::Lookup));
    auto const purgeAll = reinterpret_cast<BIBCachePurgeAllStaticCachesProc>(BIBRuntimeLookup(
        "BIBCacheInterface", "PurgeAllStaticCaches", "BIBCachePurgeAllStaticCachesProc"));
    purgeAll();
    EXPECT_EQ(1, cache.fCleared);
    BIBClientTerminate();
    EXPECT_EQ(2, cache.fCleared);
    purgeAll();
    EXPECT_EQ(2, cache.fCleared);
}

} // namespace BIB_T_NMT
