#include "runtime/objects/Cache.h"

#include "api/BIBCacheInterface.h"
#include "runtime/objects/Boundary.h"
#include "runtime/objects/Tables.h"

#include <algorithm>

namespace bibrt {

Cache& Cache::The() {
    static auto* const kCache = new Cache;
    return *kCache;
}

DroppedData Cache::Drop(BIBCacheID& id) noexcept {
    fSize -= id.fCost;
    id.fCost = 0;
    id.fLocks = 0;
    id.fAge.Leave();
    return {std::exchange(id.fData, nullptr), std::exchange(id.fPurgeProc, nullptr)};
}

void Cache::Use(BIBCacheID& id) noexcept {
    id.fLastUse = ++fTime;
    id.fAge.EnterBefore(fByAge);
}

void Cache::LeaveSet(BIBCacheID& id) noexcept {
    id.fSet = nullptr;
    id.fMembership.Leave();
}

void Cache::Release(BIBCacheID& id) noexcept {
    bool isLast = false;
    DroppedData const dropped = Locked([&]() -> DroppedData {
        isLast = --id.fRefs == 0;
        if (!isLast) {
            return {};
        }
        LeaveSet(id);
        return Drop(id);
    });
    if (isLast) {
        DeleteObject(&id);
    }
}

void Cache::Attach(BIBCacheID& id, BIBCacheSet* set) noexcept {
    Locked([&] {
        LeaveSet(id);
        if (set) {
            id.fSet = set;
            id.fMembership.EnterBefore(set->fMembers);
        }
    });
}

void Cache::Add(BIBCacheID& id, void* data, unsigned long cost, void (*purgeProc)(void*)) noexcept {
    DroppedData const dropped = Locked([&] {
        DroppedData old = Drop(id);
        if (data) {
            id.fData = data;
            id.fPurgeProc = purgeProc;
            id.fCost = cost;
            fSize += cost;
            Use(id);
        }
        return old;
    });
}

void Cache::UpdateCost(BIBCacheID& id, unsigned long cost) noexcept {
    Locked([&] {
        if (id.fData) {
            fSize += cost - id.fCost;
            id.fCost = cost;
        }
    });
}

void* Cache::MarkNoPurge(BIBCacheID& id) noexcept {
    return Locked([&]() -> void* {
        if (id.fData) {
            ++id.fLocks;
            Use(id);
        }
        return id.fData;
    });
}

bool Cache::PurgeOldest(unsigned long latestUse, unsigned long& cost) noexcept {
    bool isFound = false;
    DroppedData const dropped = Locked([&]() -> DroppedData {
        RingLink<BIBCacheID> const* link = fByAge.fNext;
        while (link->fOwner && link->fOwner->fLocks != 0) {
            link = link->fNext;
        }
        isFound = link->fOwner && link->fOwner->fLastUse <= latestUse;
        if (!isFound) {
            return {};
        }
        cost = link->fOwner->fCost;
        return Drop(*link->fOwner);
    });
    return isFound;
}

void Cache::RemoveID(BIBCacheID& id) noexcept {
    DroppedData const dropped = Locked([&] { return Drop(id); });
}

// Moves the first id of a set to its end and drops its data.
DroppedData Cache::DropFirst(BIBCacheSet& set) noexcept {
    RingLink<BIBCacheID>& first = *set.fMembers.fNext;
    if (!first.fOwner) {
        return {};
    }
    first.EnterBefore(set.fMembers);
    return Drop(*first.fOwner);
}

void Cache::RemoveIDs(BIBCacheSet& set) noexcept {
    unsigned long count = Locked([&] {
        // A purge procedure may give up what seemed the last reference.
        ++set.fRefs;
        unsigned long members = 0;
        for (auto const* link = set.fMembers.fNext; link->fOwner; link = link->fNext) {
            ++members;
        }
        return members;
    });
    for (; count != 0; --count) {
        DroppedData const dropped = Locked([&] { return DropFirst(set); });
    }
    DeleteSet(set);
}

void Cache::DeleteSet(BIBCacheSet& set) noexcept {
    bool const isLast = Locked([&] {
        if (--set.fRefs != 0) {
            return false;
        }
        while (!set.fMembers.IsAlone()) {
            LeaveSet(*set.fMembers.fNext->fOwner);
        }
        return true;
    });
    if (isLast) {
        DeleteObject(&set);
    }
}

void (*Cache::NextClientPurge(unsigned long& after, unsigned long until) noexcept)() {
    std::lock_guard const guard(fLock);
    auto const next =
        std::find_if(fClientPurges.begin(), fClientPurges.end(), [after](ClientPurge const& purge) {
            return purge.fAdded > after;
        });
    if (next == fClientPurges.end() || next->fAdded > until) {
        return nullptr;
    }
    after = next->fAdded;
    return next->fProc;
}

// By the time of adding, not by position: a procedure may remove itself and others, and add some,
// which are not called any more.
void Cache::CallClientPurges() {
    unsigned long const until = Locked([&] { return fTime; });
    unsigned long after = 0;
    while (auto* const purge = NextClientPurge(after, until)) {
        purge();
    }
}

void Cache::AddClientPurge(void (*purge)()) {
    std::lock_guard const guard(fLock);
    for (auto const& known : fClientPurges) {
        if (known.fProc == purge) {
            return;
        }
    }
    fClientPurges.push_back({purge, ++fTime});
}

void Cache::RemoveClientPurge(void (*purge)()) noexcept {
    Locked([&] {
        std::erase_if(
            fClientPurges, [=](ClientPurge const& known) { return known.fProc == purge; });
    });
}

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
