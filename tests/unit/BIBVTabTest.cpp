#include "bib/BIBVTab.h"

#include "bib/BIBData.h"
#include "bib/BIBError.h"

#include "bib/POSNumber.h"
#include "bib/POSObject.h"
#include "tests/support/BoundClient.h"

namespace BIB_T_NMT {

using support::WhatItThrows;

namespace {

using Table = _t_POSObjectVirtualInterface;

enum class Outcome { kLoads, kMisses, kThrows };

Outcome gOutcome = Outcome::kLoads;
int gLoads = 0;

int TestLoader(BIBContainer const* container, int mustExist, Table* table) {
    ++gLoads;
    if (gOutcome == Outcome::kThrows) {
        CBIBError::ThrowError("load failed", "", 0, nullptr, nullptr);
    }
    int const result = ConstructPOSObjectVirtualInterfaceMethods(container, mustExist, table);
    return gOutcome == Outcome::kLoads ? result : 0;
}

} // namespace

class BIBVTabCache : public support::BoundClientTest {
protected:
    BIBVTabCache() {
        gOutcome = Outcome::kLoads;
        gLoads = 0;
    }
    ~BIBVTabCache() override { fCache.DeleteAllElements(); }

    Table* GetVTab(BIBContainer* container) { return fCache.GetVTab(container, &TestLoader); }

    TBIBVTabList<Table> fCache;
    CPOSNumber fNumber{1.0};
    CPOSNumber fOther{2.0};
};

TEST_F(BIBVTabCache, LoadsOncePerSignature) {
    Table const* const vtab = GetVTab(fNumber);
    EXPECT_EQ(vtab, GetVTab(fOther));
    EXPECT_EQ(1, gLoads);
    EXPECT_EQ(1U, fCache.GetElementCount());
    EXPECT_NE(nullptr, vtab->Clone);
}

TEST_F(BIBVTabCache, ReloadsInPlaceWhenTheCounterMoves) {
    Table* const vtab = GetVTab(fNumber);
    auto* const clone = vtab->Clone;
    vtab->Clone = nullptr;
    MoveCounter();
    EXPECT_EQ(vtab, GetVTab(fOther));
    EXPECT_EQ(clone, vtab->Clone);
    EXPECT_EQ(2, gLoads);
    EXPECT_EQ(1U, fCache.GetElementCount());
}

TEST_F(BIBVTabCache, ForgetsANewEntryWhoseLoadThrows) {
    gOutcome = Outcome::kThrows;
    EXPECT_EQ("load failed", WhatItThrows([this] { GetVTab(fNumber); }));
    EXPECT_EQ(0U, fCache.GetElementCount());
    gOutcome = Outcome::kLoads;
    EXPECT_NE(nullptr, GetVTab(fNumber));
}

TEST_F(BIBVTabCache, KeepsAnOldEntryWhoseReloadThrows) {
    Table* const vtab = GetVTab(fNumber);
    MoveCounter();
    gOutcome = Outcome::kThrows;
    EXPECT_EQ("load failed", WhatItThrows([this] { GetVTab(fNumber); }));
    EXPECT_EQ(vtab, GetVTab(fNumber));
    EXPECT_EQ(2, gLoads);
}

TEST_F(BIBVTabCache, RefusesAnIncompleteSignatureUntilTheCounterMoves) {
    gOutcome = Outcome::kMisses;
    EXPECT_EQ("invalid container", WhatItThrows([this] { GetVTab(fNumber); }));
    gOutcome = Outcome::kLoads;
    EXPECT_EQ("invalid container", WhatItThrows([this] { GetVTab(fNumber); }));
    EXPECT_EQ(1, gLoads);
    MoveCounter();
    EXPECT_NE(nullptr, GetVTab(fNumber));
}

TEST_F(BIBVTabCache, LeavesAnOptionalMethodOutAndGoesOn) {
    constexpr _t_BIBFTabEntry kRows[] = {
        {"NoSuchMethod", "POSObjectCloneProc"}, {"IsEqual", "POSObjectIsEqualProc"}, {"", ""}};
    void* methods[2] = {this, nullptr};
    EXPECT_EQ(1, BIBLoadMethodTable(kRows, 2, fNumber, 0, methods));
    EXPECT_EQ(nullptr, methods[0]);
    EXPECT_NE(nullptr, methods[1]);
    EXPECT_NE("nothing", WhatItThrows([&] { BIBLoadMethodTable(kRows, 2, fNumber, 1, methods); }));
}

namespace {

BIBError* GiveNoMethod(
    void** result,
    BIBContainer const* /*container*/,
    BIBStringAtom* /*name*/,
    BIBStringAtom* /*procType*/,
    long /*optional*/) {
    *result = nullptr;
    return nullptr;
}

} // namespace

TEST_F(BIBVTabCache, RefusesARequiredMethodThatIsMissingWithoutAStatus) {
    auto& table = *TBIBInterfaceClient<BIBContainerInterface>::GetProcTable_Mutable();
    auto const saved = table.GetMethod;
    table.GetMethod = &GiveNoMethod;
    EXPECT_EQ("invalid container", WhatItThrows([this] { GetVTab(fNumber); }));
    table.GetMethod = saved;
    EXPECT_EQ("invalid container", WhatItThrows([this] { GetVTab(fNumber); }));
}

TEST_F(BIBVTabCache, ServesTheInterfacesWithoutAHandle) {
    // A number has none of their methods: the lookup must fail, and leave nothing behind.
    auto& cache = TBIB2VTabList<BIBDataStoreInterface>::fVTabList;
    EXPECT_NE("nothing", WhatItThrows([&] { cache.GetVTab(fNumber, cache.fInitProc); }));
    EXPECT_EQ(0U, cache.GetElementCount());
}

} // namespace BIB_T_NMT
