#include "bib/BIBClient.h"

#include "api/BIBCacheInterface.h"
#include "bib/BIBCache.h"
#include "bib/BIBContainer.h"
#include "bib/BIBError.h"
#include "bib/BIBInterfaceClient.h"
#include "bib/BIBMemory.h"
#include "bib/BIBStream.h"
#include "bib/BIBStringAtom.h"
#include "bib/LazyTerminate.h"
#include "bib/POSCollections.h"
#include "bib/POSScalars.h"
#include "conformance/Tables.h"
#include "tests/support/BoundClient.h"

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
    gErrorProc = nullptr;
    EXPECT_EQ(0, BIBReportError("lost"));
}

// Of the runtime's own errors, the start needs the unknown one alone.
TEST_F(BIBClient, StartsWithoutAMemoryError) {
    static BRVErrorID missing = kBRVMemoryError;
    static auto const kErrors = conformance::LoadTable<_t_BIBErrorInterface>(&BIBRuntimeLookup);
    fLookup.Replace(
        "BIBErrorInterface.GetCoreError", +[](BRVErrorID id) -> BIBError* {
            return id == missing ? nullptr : kErrors.GetCoreError(id);
        });
    for (auto const& [id, starts] : {std::pair(kBRVUnknownError, false), {kBRVMemoryError, true}}) {
        MoveCounter();
        BIBClientTerminate();
        missing = id;
        EXPECT_EQ(starts, BIBClientInit(&LookupDouble::Lookup));
    }
    MoveCounter();
}

// What is unregistered while a table is loaded makes it stale at once.
TEST_F(BIBClient, LoadsATableAgainThatWasUnregisteredMeanwhile) {
    struct Table {
        void (*fRow)();
    };
    static int loads = 0;
    loads = 0;
    auto const load = +[](Table* /*table*/) {
        loads == 0 ? MoveCounter() : void();
        ++loads;
        return 1;
    };
    Table table{};
    unsigned long stamp = 0;
    for (int const expected : {1, 2, 2}) {
        EXPECT_EQ(&table, GuardGlobalProcs(table, stamp, load));
        EXPECT_EQ(expected, loads);
    }
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

TEST_F(BIBClient, LoadsATableBackwardsAndStopsAtTheFirstGap) {
    constexpr _t_BIBFTabEntry kRows[] = {
        BIB_STREAM_FACTORY_INTERFACE_ROWS(BIB_TABLE_NAMES){"", ""}};
    int old = 0;
    void* procs[] = {&old, &old, &old, &old, &old, &old};
    auto const load = [&] {
        return BIBLoadProcTable(kRows, 6, "BIBStreamFactoryInterface", procs, 0);
    };
    WithoutRows({"BIBStreamFactoryInterface.NewClientSimpleStream"}, [&] { EXPECT_EQ(0, load()); });
    std::string states; // of the slots
    for (void const* const proc : procs) {
        states += proc == nullptr ? '-' : proc == &old ? 'o' : 'n';
    }
    EXPECT_EQ("ooo-nn", states);
    EXPECT_EQ(1, load());
    EXPECT_NE(&old, procs[0]);
}

TEST_F(BIBClient, ThrowsAnEmptyMessageForAMissingNameOnceBound) {
    EXPECT_EQ("", WhatItThrows([] { BIBGetProcAddress("No such", "name", "at all"); }));
}

TEST_F(BIBClient, ReloadsAStaleTableOnceAndOnlyWhenAsked) {
    auto const asked = fLookup.fAsked.size();
    MoveCounter();
    EXPECT_EQ(&Containers::fProcTable, GetProcs<BIBContainerInterface>());
    EXPECT_EQ(asked, fLookup.fAsked.size());
    for (int round = 0; round < 2; ++round) {
        Containers::CheckInterface();
        EXPECT_EQ(asked + 16, fLookup.fAsked.size());
        EXPECT_EQ(*gBIBUnregisterCount, Containers::fCount);
    }
}

TEST_F(BIBClient, TellsAMissingCoreInterfaceByTheState) {
    fLookup.Hide("BIBContainerInterface.GetSignature");
    MoveCounter();
    EXPECT_EQ("", WhatItThrows([] { Containers::CheckInterface(); }));
    WithoutRows({"BIBContainerInterface.GetSignature"}, [] {
        EXPECT_EQ(nullptr, PeekProcs<BIBContainerInterface>());
        EXPECT_EQ("Missing Interface", WhatItThrows([] { Containers::CheckInterface(); }));
    });
}

TEST_F(BIBClient, ClearsTheFirstSlotOfAGlobalTableThatCannotBeBound) {
    ASSERT_NE(nullptr, GetGlobalPOSNumberInterfaceProcs());
    WithoutRows({"POSNumberInterface.IsPOSNumber"}, [] {
        EXPECT_EQ(nullptr, GetGlobalPOSNumberInterfaceProcs());
        EXPECT_EQ(nullptr, gPOSNumberInterface.NewPOSNumber);
        EXPECT_NE(nullptr, gPOSNumberInterface.Get);
        EXPECT_EQ("invalid container", WhatItThrows([] { CPOSNumber const number(1.0); }));
    });
    EXPECT_EQ(1.0, CPOSNumber(1.0).Get());
}

TEST_F(BIBClient, MakesNoHandleWhileItsTableIsMissing) {
    CPOSDict const dict;
    POSDict* const raw = dict;
    auto const check = [&] {
        EXPECT_FALSE(CPOSDict(raw).IsValid());
        EXPECT_FALSE(CPOSDict(CPOSObject(dict), /*quiet=*/true).IsValid());
        EXPECT_EQ("invalid container", WhatItThrows([] { CPOSDict const handle; }));
        EXPECT_EQ("invalid container", WhatItThrows([] { CPOSArray const handle; }));
        EXPECT_EQ("invalid container", WhatItThrows([&] { CPOSDictIterator const handle(dict); }));
    };
    WithoutRows(
        {"POSDictInterface.DeepGet", "POSArrayInterface.SetAt", "POSDictIteratorInterface.Next"},
        check);
    CPOSDict::GetProcs();
}

namespace {

class FailingStart : public LazyTerminate {
public:
    bool Initialize() override { return false; }
};

class CountingCache : public CBIBStaticCacheBase {
public:
    void Clear() override { ++fCleared; }

    int fCleared = 0;
};

} // namespace

TEST(BIBClientUnbound, FailsWhereALazyObjectOrTheUnknownErrorDoes) {
    LookupDouble lookup;
    {
        FailingStart const failing;
        EXPECT_FALSE(BIBClientInit(&LookupDouble::Lookup));
        BIBClientTerminate();
    }
    lookup.Replace(
        "BIBErrorInterface.GetCoreError", +[](BRVErrorID) -> BIBError* { return nullptr; });
    TBIBInterfaceClient<BIBErrorInterface>::fCount = 0;
    EXPECT_FALSE(BIBClientInit(&LookupDouble::Lookup));
    BIBClientTerminate();
    TBIBInterfaceClient<BIBErrorInterface>::fCount = 0;
}

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
