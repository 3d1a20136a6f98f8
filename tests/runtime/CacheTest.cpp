#include "RuntimeFixture.h"

namespace runtimetest {
namespace {

void Increment(void* counter) {
    ++*static_cast<int*>(counter);
}

int gClientPurges = 0;

void CountPurge() {
    ++gClientPurges;
}

void ThrowFromPurge() {
    throw 3;
}

void RemoveItself() {
    conformance::LoadTable<_t_BIBCacheInterface>(&BIBRuntimeLookup)
        .RemoveClientPurge(&RemoveItself, 0);
    CountPurge();
}

// Not called again by the purge that runs.
void AddItselfAgain() {
    auto const cache = conformance::LoadTable<_t_BIBCacheInterface>(&BIBRuntimeLookup);
    cache.RemoveClientPurge(&AddItselfAgain, 0);
    if (++gClientPurges < 100) {
        cache.AddClientPurge(&AddItselfAgain, 0);
    }
}

class CacheTest : public RuntimeTest {
protected:
    void SetUp() override {
        RuntimeTest::SetUp();
        for (int i = 0; i < kIDs; ++i) {
            fIDs[i] = fCache.NewCacheID();
            fCache.Add(fIDs[i], &fPurged[i], 10UL * static_cast<unsigned long>(i + 1), &Increment);
        }
    }
    void TearDown() override {
        for (BIBCacheID* const id : fIDs) {
            fCache.Release(id);
        }
        EXPECT_EQ(fCache.CurrentCacheSize(), 0U);
        RuntimeTest::TearDown();
    }

    static constexpr int kIDs = 3;
    _t_BIBCacheInterface const& fCache = Rows<_t_BIBCacheInterface>();
    BIBCacheID* fIDs[kIDs] = {};
    int fPurged[kIDs] = {};
};

TEST_F(CacheTest, KnowsTheCostOfWhatItHolds) {
    EXPECT_EQ(fCache.CurrentCacheSize(), 60U);
    EXPECT_EQ(fCache.ReturnCost(fIDs[1]), 20U);
    fCache.UpdateCost(fIDs[1], 5);
    EXPECT_EQ(fCache.CurrentCacheSize(), 45U);
    fCache.RemoveID(fIDs[1]);
    fCache.UpdateCost(fIDs[1], 99);
    EXPECT_EQ(fCache.ReturnCost(fIDs[1]), 0U);
    EXPECT_EQ(fCache.CurrentCacheSize(), 40U);
    EXPECT_EQ(fPurged[1], 1);
}

TEST_F(CacheTest, NewDataDropsTheOldFirst) {
    int other = 0;
    fCache.MarkNoPurge(fIDs[0]);
    fCache.Add(fIDs[0], &other, 1, &Increment);
    EXPECT_EQ(fPurged[0], 1);
    EXPECT_EQ(other, 0);
    EXPECT_EQ(fCache.CurrentCacheSize(), 51U);
    fCache.Add(fIDs[0], nullptr, 8, &Increment);
    EXPECT_EQ(other, 1);
    EXPECT_EQ(fCache.MarkNoPurge(fIDs[0]), nullptr);
}

TEST_F(CacheTest, PurgesWhatWasUsedLongestAgoAndIsUnlocked) {
    unsigned long const time = fCache.GetCacheTime();
    EXPECT_EQ(fCache.MarkNoPurge(fIDs[0]), &fPurged[0]);
    EXPECT_GT(fCache.GetCacheTime(), time);
    fCache.MarkPurge(fIDs[0]);
    fCache.MarkNoPurge(fIDs[1]);
    BIBCachePurge* const purge = fCache.NewCachePurge();
    unsigned long cost = 0;
    EXPECT_NE(fCache.PurgeNextBlock(purge, &cost), 0);
    EXPECT_EQ(cost, 30U);
    fCache.Add(fIDs[2], &fPurged[2], 1, &Increment);
    EXPECT_NE(fCache.PurgeNextBlock(purge, nullptr), 0);
    EXPECT_EQ(fPurged[0], 1);
    EXPECT_EQ(fCache.PurgeNextBlock(purge, &cost), 0);
    EXPECT_EQ(cost, 0U);
    EXPECT_EQ(fPurged[1], 0);
    EXPECT_EQ(fPurged[2], 1);
    fCache.DeleteCachePurge(purge);
    fCache.DeleteCachePurge(nullptr);
    // What was used last when a purge began is part of it.
    BIBCachePurge* const all = fCache.NewCachePurge();
    EXPECT_NE(fCache.PurgeNextBlock(all, nullptr), 0);
    EXPECT_EQ(fPurged[2], 2);
    fCache.DeleteCachePurge(all);
}

TEST_F(CacheTest, ASetHoldsIdsButNoReference) {
    BIBCacheSet* const set = fCache.NewCacheSet();
    EXPECT_NE(fCache.Attach(fIDs[0], set), 0);
    EXPECT_NE(fCache.Attach(fIDs[1], set), 0);
    EXPECT_NE(fCache.SearchForID(set, fIDs[0]), 0);
    EXPECT_EQ(fCache.SearchForID(set, fIDs[2]), 0);
    EXPECT_NE(fCache.Attach(fIDs[0], nullptr), 0);
    EXPECT_EQ(fCache.SearchForID(set, fIDs[0]), 0);
    fCache.MarkNoPurge(fIDs[1]);
    fCache.AddRefCacheSet(set);
    fCache.DeleteCacheSet(set);
    fCache.RemoveIDs(set);
    EXPECT_EQ(fPurged[1], 1);
    EXPECT_EQ(fPurged[0], 0);
    EXPECT_EQ(fCache.SearchForID(set, fIDs[1]), 0);
    fCache.DeleteCacheSet(set);
    EXPECT_NE(fCache.Attach(fIDs[1], nullptr), 0);
}

TEST_F(CacheTest, AnIdGoesWithItsLastReferenceAndLeavesItsSet) {
    BIBCacheSet* const set = fCache.NewCacheSet();
    int purged = 0;
    BIBCacheID* const id = fCache.NewCacheID();
    fCache.Attach(id, set);
    fCache.Add(id, &purged, 1, &Increment);
    fCache.AddRef(id);
    fCache.Release(id);
    EXPECT_EQ(purged, 0);
    fCache.Release(id);
    EXPECT_EQ(purged, 1);
    fCache.RemoveIDs(set);
    fCache.DeleteCacheSet(set);
}

TEST_F(CacheTest, ClientProceduresAreCalledOnceEach) {
    gClientPurges = 0;
    fCache.AddClientPurge(&CountPurge, 0);
    fCache.AddClientPurge(&CountPurge, 0);
    fCache.AddClientPurge(&ThrowFromPurge, 1);
    fCache.PurgeAllStaticCaches();
    EXPECT_EQ(gClientPurges, 1);
    fCache.AddClientPurge(&ThrowFromPurge, 0);
    EXPECT_THROW(fCache.PurgeAllStaticCaches(), int);
    fCache.RemoveClientPurge(&ThrowFromPurge, 0);
    fCache.RemoveClientPurge(&CountPurge, 0);
    fCache.RemoveClientPurge(&CountPurge, 0);
    fCache.PurgeAllStaticCaches();
    EXPECT_EQ(gClientPurges, 2);
    fCache.AddClientPurge(&RemoveItself, 0);
    fCache.AddClientPurge(&CountPurge, 0);
    fCache.PurgeAllStaticCaches();
    EXPECT_EQ(gClientPurges, 4);
    fCache.PurgeAllStaticCaches();
    EXPECT_EQ(gClientPurges, 5);
    fCache.RemoveClientPurge(&CountPurge, 0);
    fCache.AddClientPurge(&AddItselfAgain, 0);
    fCache.PurgeAllStaticCaches();
    EXPECT_EQ(gClientPurges, 6);
    fCache.RemoveClientPurge(&AddItselfAgain, 0);
}

TEST_F(CacheTest, NullsAreAcceptedAndMemoryFailureGivesNull) {
    fCache.AddRef(nullptr);
    fCache.Release(nullptr);
    fCache.RemoveID(nullptr);
    fCache.RemoveIDs(nullptr);
    fCache.DeleteCacheSet(nullptr);
    EXPECT_EQ(fCache.Attach(nullptr, nullptr), 0);
    EXPECT_EQ(fCache.PurgeNextBlock(nullptr, nullptr), 0);
    bibrt::FailAllocation(1, /*andAllLater=*/true);
    EXPECT_EQ(fCache.NewCacheID(), nullptr);
    EXPECT_EQ(fCache.NewCacheSet(), nullptr);
    EXPECT_EQ(fCache.NewCachePurge(), nullptr);
}

} // namespace
} // namespace runtimetest
