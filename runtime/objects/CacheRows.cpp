#include "api/BIBCacheInterface.h"

#include "runtime/objects/Boundary.h"
#include "runtime/objects/Cache.h"
#include "runtime/objects/Tables.h"

namespace bibrt {

namespace {

BIBCacheID* NewCacheID() {
    return AtRow<BIBCacheID*>(nullptr, [] { return NewObject<BIBCacheID>(); });
}

void AddRef(BIBCacheID* id) {
    if (id) {
        Cache::The().Locked([&] { ++id->fRefs; });
    }
}

void Release(BIBCacheID* id) {
    if (id) {
        Cache::The().Release(*id);
    }
}

int Attach(BIBCacheID* id, BIBCacheSet* set) {
    if (!id) {
        return 0;
    }
    Cache::The().Attach(*id, set);
    return 1;
}

void Add(BIBCacheID* id, void* data, unsigned long cost, void (*purgeProc)(void*)) {
    if (id) {
        Cache::The().Add(*id, data, cost, purgeProc);
    }
}

void UpdateCost(BIBCacheID* id, unsigned long cost) {
    if (id) {
        Cache::The().UpdateCost(*id, cost);
    }
}

unsigned long ReturnCost(BIBCacheID* id) {
    return id ? Cache::The().Locked([&] { return id->fCost; }) : 0;
}

void* MarkNoPurge(BIBCacheID* id) {
    return id ? Cache::The().MarkNoPurge(*id) : nullptr;
}

void MarkPurge(BIBCacheID* id) {
    if (id) {
        Cache::The().Locked([&] { id->fLocks -= id->fLocks != 0 ? 1 : 0; });
    }
}

unsigned long GetCacheTime() {
    return Cache::The().Locked([] { return Cache::The().Time(); });
}

unsigned long CurrentCacheSize() {
    return Cache::The().Locked([] { return Cache::The().Size(); });
}

BIBCachePurge* NewCachePurge() {
    return AtRow<BIBCachePurge*>(
        nullptr, [] { return NewObject<BIBCachePurge>(BIBCachePurge{GetCacheTime()}); });
}

int PurgeNextBlock(BIBCachePurge* purge, unsigned long* cost) {
    unsigned long dropped = 0;
    bool const isFound = purge && Cache::The().PurgeOldest(purge->fLatestUse, dropped);
    if (cost) {
        *cost = dropped;
    }
    return isFound ? 1 : 0;
}

void DeleteCachePurge(BIBCachePurge* purge) {
    DeleteObject(purge);
}

void PurgeAllStaticCaches() {
    Cache::The().CallClientPurges();
}

void AddClientPurge(void (*purge)(), long flags) {
    if (purge && flags == 0) {
        AtRow(/*failure=*/false, [&] {
            Cache::The().AddClientPurge(purge);
            return true;
        });
    }
}

void RemoveClientPurge(void (*purge)(), long flags) {
    if (purge && flags == 0) {
        Cache::The().RemoveClientPurge(purge);
    }
}

BIBCacheSet* NewCacheSet() {
    return AtRow<BIBCacheSet*>(nullptr, [] { return NewObject<BIBCacheSet>(); });
}

void AddRefCacheSet(BIBCacheSet* set) {
    if (set) {
        Cache::The().Locked([&] { ++set->fRefs; });
    }
}

void DeleteCacheSet(BIBCacheSet* set) {
    if (set) {
        Cache::The().DeleteSet(*set);
    }
}

int SearchForID(BIBCacheSet* set, BIBCacheID* id) {
    return set && id && Cache::The().Locked([&] { return id->fSet == set && id->fData; }) ? 1 : 0;
}

void RemoveID(BIBCacheID* id) {
    if (id) {
        Cache::The().RemoveID(*id);
    }
}

void RemoveIDs(BIBCacheSet* set) {
    if (set) {
        Cache::The().RemoveIDs(*set);
    }
}

} // namespace

BIBRT_DEFINE_TABLE(
    CacheTable, "BIBCacheInterface", _t_BIBCacheInterface, BIB_CACHE_INTERFACE_ROWS, 23)

} // namespace bibrt
