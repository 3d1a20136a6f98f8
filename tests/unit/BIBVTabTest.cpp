#include "bib/BIBVTab.h"

#include "bib/BIBError.h"
#include "bib/BIBStream.h"
#include "bib/POSObject.h"
#include "bib/POSScalars.h"
#include "tests/support/BoundClient.h"

namespace BIB_T_NMT {

using support::WhatItThrows;
using Table = _t_POSObjectVirtualInterface;

class BIBVTabCache : public support::BoundClientTest {
protected:
    enum class Outcome { kLoads, kMisses, kThrows };

    BIBVTabCache() {
        fOutcome = Outcome::kLoads;
        fLoads = 0;
    }
    ~BIBVTabCache() override { fCache.DeleteAllElements(); }

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

TEST_F(BIBVTabCache, LoadsOncePerSignatureAndInPlaceWhenTheCounterMoves) {
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

TEST_F(BIBVTabCache, ForgetsANewEntryWhoseLoadThrowsAndKeepsAnOldOne) {
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

TEST_F(BIBVTabCache, RefusesAnIncompleteSignatureUntilTheCounterMoves) {
    fOutcome = Outcome::kMisses;
    EXPECT_EQ("invalid container", WhatGettingThrows());
    fOutcome = Outcome::kLoads;
    EXPECT_EQ("invalid container", WhatGettingThrows());
    EXPECT_EQ(1, fLoads);
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

TEST_F(BIBVTabCache, RefusesARequiredMethodThatIsMissingWithoutAStatus) {
    auto& table = *TBIBInterfaceClient<BIBContainerInterface>::GetProcTable_Mutable();
    auto const saved = table.GetMethod;
    table.GetMethod = [](void** result, auto*, auto*, auto*, long) -> BIBError* {
        *result = nullptr;
        return nullptr;
    };
    EXPECT_EQ("invalid container", WhatGettingThrows());
    table.GetMethod = saved;
    EXPECT_EQ("invalid container", WhatGettingThrows());
}

TEST_F(BIBVTabCache, ServesTheInterfacesWithoutAHandle) {
    // A number has none of their methods: the lookup must fail, and leave nothing behind.
    auto& cache = TBIB2VTabList<BIBDataStoreInterface>::fVTabList;
    EXPECT_NE("nothing", WhatItThrows([&] { cache.GetVTab(fNumber, cache.fInitProc); }));
    EXPECT_EQ(0U, cache.GetElementCount());
}

} // namespace BIB_T_NMT
