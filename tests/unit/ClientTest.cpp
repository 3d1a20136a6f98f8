// How the component is bound to a runtime: tables of rows, methods of kinds, and objects that start
// and stop with it.
#include "bib/BIBClient.h"

#include "bib/BIBCache.h"
#include "bib/BIBContainer.h"
#include "bib/BIBError.h"
#include "bib/BIBInterfaceClient.h"
#include "bib/BIBVTab.h"
#include "bib/LazyTerminate.h"
#include "bib/POSScalars.h"
#include "conformance/Tables.h"
#include "tests/support/BoundClient.h"

#include <memory>
#include <vector>

namespace BIB_T_NMT {

using support::LookupDouble;
using support::WhatItThrows;

using Client = support::BoundClientTest;
using Containers = TBIBInterfaceClient<BIBContainerInterface>;

TEST(UnboundClient, FindsAndReportsNothing) {
    BIBClientTerminate();
    EXPECT_FALSE(BIBClientInit(nullptr));
    EXPECT_EQ(nullptr, BIBGetProcAddress("BIB", "BIBReportError", "BIBReportError"));
    gErrorProc = nullptr;
    EXPECT_EQ(0, BIBReportError("lost"));
}

// Of the runtime's own errors, the start needs the unknown one alone.
TEST_F(Client, StartsWithoutAMemoryErrorAlone) {
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
TEST_F(Client, LoadsATableAgainThatWasUnregisteredMeanwhile) {
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

TEST_F(Client, ReloadsAStaleTableOnceAndOnlyWhenAsked) {
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

using Table = _t_POSObjectVirtualInterface;

class Methods : public support::BoundClientTest {
protected:
    enum class Outcome { kLoads, kMisses, kThrows };

    Methods() {
        fOutcome = Outcome::kLoads;
        fLoads = 0;
    }
    ~Methods() override { fCache.DeleteAllElements(); }

    static int Load(BIBContainer const* container, int mustExist, Table* table) {
        ++fLoads;
        if (fOutcome == Outcome::kThrows) {
            CBIBError::ThrowError("load failed", "", 0, nullptr, nullptr);
        }
        int const result = ConstructPOSObjectVirtualInterfaceMethods(container, mustExist, table);
        return fOutcome == Outcome::kLoads ? result : 0;
    }

    Table* GetVTab(BIBContainer* container) { return fCache.GetVTab(container, &Load); }
    std::string WhatGettingThrows() {
        return WhatItThrows([this] { GetVTab(fNumber); });
    }

    static inline Outcome fOutcome;
    static inline int fLoads;
    TBIBVTabList<Table> fCache;
    CPOSNumber fNumber{1.0};
    CPOSNumber fOther{2.0};
};

TEST_F(Methods, AreLoadedOncePerSignatureAndInPlaceWhenTheCounterMoves) {
    Table* const vtab = GetVTab(fNumber);
    EXPECT_EQ(vtab, GetVTab(fOther));
    EXPECT_EQ(1, fLoads);
    auto* const clone = std::exchange(vtab->Clone, nullptr);
    MoveCounter();
    EXPECT_EQ(vtab, GetVTab(fOther));
    EXPECT_EQ(clone, vtab->Clone);
    EXPECT_EQ(2, fLoads);
    EXPECT_EQ(1U, fCache.GetElementCount());
}

TEST_F(Methods, AreForgottenWhenTheFirstLoadThrowsAndKeptWhenALaterOneDoes) {
    fOutcome = Outcome::kThrows;
    EXPECT_EQ("load failed", WhatGettingThrows());
    EXPECT_EQ(0U, fCache.GetElementCount());
    fOutcome = Outcome::kLoads;
    Table* const vtab = GetVTab(fNumber);
    MoveCounter();
    fOutcome = Outcome::kThrows;
    EXPECT_EQ("load failed", WhatGettingThrows());
    EXPECT_EQ(vtab, GetVTab(fNumber));
    EXPECT_EQ(3, fLoads);
}

TEST_F(Methods, OfAnIncompleteSignatureAreRefusedUntilTheCounterMoves) {
    fOutcome = Outcome::kMisses;
    EXPECT_EQ("invalid container", WhatGettingThrows());
    fOutcome = Outcome::kLoads;
    EXPECT_EQ("invalid container", WhatGettingThrows());
    EXPECT_EQ(1, fLoads);
    MoveCounter();
    EXPECT_NE(nullptr, GetVTab(fNumber));
}

TEST_F(Methods, ThatAreOptionalMayBeMissing) {
    constexpr _t_BIBFTabEntry kRows[] = {
        {"NoSuchMethod", "POSObjectCloneProc"}, {"IsEqual", "POSObjectIsEqualProc"}, {"", ""}};
    void* methods[2] = {this, nullptr};
    EXPECT_EQ(1, BIBLoadMethodTable(kRows, 2, fNumber, 0, methods));
    EXPECT_EQ(nullptr, methods[0]);
    EXPECT_NE(nullptr, methods[1]);
    EXPECT_NE("nothing", WhatItThrows([&] { BIBLoadMethodTable(kRows, 2, fNumber, 1, methods); }));
    // A runtime may give none without an error, too.
    auto& table = *TBIBInterfaceClient<BIBContainerInterface>::GetProcTable_Mutable();
    auto const saved = table.GetMethod;
    table.GetMethod = [](void** result, auto*, auto*, auto*, long) -> BIBError* {
        *result = nullptr;
        return nullptr;
    };
    EXPECT_EQ("invalid container", WhatGettingThrows());
    table.GetMethod = saved;
}

namespace {

std::string gCalls;

// Writes its name into gCalls: upper case for Initialize, lower case for Terminate.
class Recorder : public LazyTerminate {
public:
    enum Outcome { kGood, kFails, kThrows };

    Recorder(char name, Outcome outcome) : fName(name), fOutcome(outcome) {}

    bool Initialize() override {
        gCalls += static_cast<char>(fName - 'a' + 'A');
        if (fOutcome == kThrows) {
            throw 1;
        }
        return fOutcome == kGood;
    }

    void Terminate() override { gCalls += fName; }

private:
    char fName;
    Outcome fOutcome;
};

class CountingCache : public CBIBStaticCacheBase {
public:
    void Clear() override { ++fCleared; }

    int fCleared = 0;
};

} // namespace

TEST(LazyObjects, StartUpToAFailureAndStopWhatCameBeforeOrAll) {
    struct {
        int fFailing; // of five, counted from 0; -1 for none
        Recorder::Outcome fOutcome;
        char const* fCalls;
    } const kCases[] = {
        {-1, Recorder::kGood, "ABCDE"},
        {2, Recorder::kFails, "ABCab"},
        {2, Recorder::kThrows, "ABCab"},
        {4, Recorder::kThrows, "ABCDEabcd"},
    };
    for (auto const& row : kCases) {
        gCalls.clear();
        std::vector<std::unique_ptr<Recorder>> recorders;
        for (int i = 4; i >= 0; --i) { // the newest comes first
            recorders.push_back(std::make_unique<Recorder>(
                static_cast<char>('a' + i), i == row.fFailing ? row.fOutcome : Recorder::kGood));
        }
        EXPECT_EQ(row.fFailing < 0, BIBClientInit(&BIBRuntimeLookup)) << row.fCalls;
        EXPECT_EQ(row.fCalls, gCalls);
        gCalls.clear();
        BIBClientTerminate();
        EXPECT_EQ("abcde", gCalls);
    }
}

TEST(LazyObjects, IncludeCachesThatTheRuntimePurges) {
    CountingCache cache;
    ASSERT_TRUE(BIBClientInit(&BIBRuntimeLookup));
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
