// The cache: ids that name data which may be dropped at any time.
//
// One lock guards everything; the procedures of callers are called outside it, and any thread may
// call any row.
#include "api/BIBCacheInterface.h"

#include "runtime/objects/Container.h"
#include "runtime/objects/Errors.h"
#include "runtime/objects/Tables.h"

#include <algorithm>
#include <list>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace bibrt {

namespace {

using CacheIDs = std::list<BIBCacheID*, CallerAllocator<BIBCacheID*>>;

// The node of an id, which enters lists and leaves them without memory.
class CacheLink {
public:
    explicit CacheLink(BIBCacheID* id) : fHome{id} {}

    // Leaves its list and goes to the end of that one.
    void MoveTo(CacheIDs& list) noexcept {
        list.splice(list.end(), *fList, fNode);
        fList = &list;
    }
    void Leave() noexcept { MoveTo(fHome); }

private:
    CacheIDs fHome; // where the node is while it stands in no list
    CacheIDs* fList = &fHome;
    CacheIDs::iterator fNode = fHome.begin();
};

struct Purger {
    void operator()(void* data) const noexcept { CallDeleteProc(fProc, data); }

    void (*fProc)(void*) = nullptr;
};

// Data on its way out of the cache. Declared before the lock is taken: its purge procedure is
// called when this goes.
using DroppedData = std::unique_ptr<void, Purger>;

} // namespace

} // namespace bibrt

struct BIBCacheID {
    long fRefs = 1;
    void* fData = nullptr;
    void (*fPurgeProc)(void*) = nullptr;
    unsigned long fCost = 0;
    unsigned long fLocks = 0;
    unsigned long fLastUse = 0;
    BIBCacheSet* fSet = nullptr;
    bibrt::CacheLink fAge{this};        // among the ids with data
    bibrt::CacheLink fMembership{this}; // in its set
};

struct BIBCacheSet {
    long fRefs = 1;
    bibrt::CacheIDs fMembers;
};

struct BIBCachePurge {
    unsigned long fLatestUse; // entries that were used after this stay
};

namespace bibrt {

namespace {

struct ClientPurge {
    void (*fProc)();
    unsigned long fAdded; // when
};

struct Cache {
    std::mutex fLock;
    CacheIDs fByAge; // the ids with data, the one used longest ago first
    unsigned long fTime = 0;
    unsigned long fSize = 0;
    std::vector<ClientPurge> fClientPurges; // in the order of their adding
};

// Never destroyed.
Cache& TheCache() {
    static auto* const kCache = new Cache;
    return *kCache;
}

class Lock {
public:
    Cache* operator->() const noexcept { return &TheCache(); }

private:
    std::lock_guard<std::mutex> fGuard{TheCache().fLock};
};

DroppedData Drop(Lock const& cache, BIBCacheID& id) noexcept {
    cache->fSize -= id.fCost;
    id.fCost = 0;
    id.fLocks = 0;
    id.fAge.Leave();
    return DroppedData(std::exchange(id.fData, nullptr), {std::exchange(id.fPurgeProc, nullptr)});
}

void Use(Lock const& cache, BIBCacheID& id) noexcept {
    id.fLastUse = ++cache->fTime;
    id.fAge.MoveTo(cache->fByAge);
}

void LeaveSet(Lock const& /*cache*/, BIBCacheID& id) noexcept {
    id.fSet = nullptr;
    id.fMembership.Leave();
}

// The rows.

BIBCacheID* NewCacheID() {
    return AtRow<BIBCacheID*>(nullptr, [] { return NewObject<BIBCacheID>(); });
}

void AddRef(BIBCacheID* id) {
    Lock const cache;
    if (id) {
        ++id->fRefs;
    }
}

void Release(BIBCacheID* id) {
    DroppedData dropped;
    Lock const cache;
    if (id && --id->fRefs == 0) {
        LeaveSet(cache, *id);
        dropped = Drop(cache, *id);
        DeleteObject(id);
    }
}

int Attach(BIBCacheID* id, BIBCacheSet* set) {
    if (!id) {
        return 0;
    }
    Lock const cache;
    LeaveSet(cache, *id);
    if (set) {
        id->fSet = set;
        id->fMembership.MoveTo(set->fMembers);
    }
    return 1;
}

void Add(BIBCacheID* id, void* data, unsigned long cost, void (*purgeProc)(void*)) {
    if (!id) {
        return;
    }
    DroppedData dropped;
    Lock const cache;
    dropped = Drop(cache, *id);
    if (data) {
        id->fData = data;
        id->fPurgeProc = purgeProc;
        id->fCost = cost;
        cache->fSize += cost;
        Use(cache, *id);
    }
}

void UpdateCost(BIBCacheID* id, unsigned long cost) {
    Lock const cache;
    if (id && id->fData) {
        cache->fSize += cost - id->fCost;
        id->fCost = cost;
    }
}

unsigned long ReturnCost(BIBCacheID* id) {
    Lock const cache;
    return id ? id->fCost : 0;
}

void* MarkNoPurge(BIBCacheID* id) {
    Lock const cache;
    if (!id || !id->fData) {
        return nullptr;
    }
    ++id->fLocks;
    Use(cache, *id);
    return id->fData;
}

void MarkPurge(BIBCacheID* id) {
    Lock const cache;
    if (id && id->fLocks != 0) {
        --id->fLocks;
    }
}

unsigned long GetCacheTime() {
    return Lock()->fTime;
}

unsigned long CurrentCacheSize() {
    return Lock()->fSize;
}

BIBCachePurge* NewCachePurge() {
    return AtRow<BIBCachePurge*>(
        nullptr, [] { return NewObject<BIBCachePurge>(BIBCachePurge{GetCacheTime()}); });
}

// Drops the entry that was used longest ago, unlocked, and not after that time. Says whether there
// was one, and its cost.
bool PurgeOldest(unsigned long latestUse, unsigned long& cost) {
    DroppedData dropped;
    Lock const cache;
    auto const oldest =
        std::ranges::find(cache->fByAge, 0U, [](BIBCacheID const* id) { return id->fLocks; });
    if (oldest == cache->fByAge.end() || (*oldest)->fLastUse > latestUse) {
        return false;
    }
    cost = (*oldest)->fCost;
    dropped = Drop(cache, **oldest);
    return true;
}

int PurgeNextBlock(BIBCachePurge* purge, unsigned long* cost) {
    unsigned long freed = 0;
    bool const isFound = purge && PurgeOldest(purge->fLatestUse, freed);
    // Stored last, once the purge procedure has run: it may look at what the caller has there.
    if (cost) {
        *cost = freed;
    }
    return isFound ? 1 : 0;
}

void DeleteCachePurge(BIBCachePurge* purge) {
    DeleteObject(purge);
}

// The first that was added after a time and not after another; null for none.
void (*NextClientPurge(unsigned long& after, unsigned long until))() {
    Lock const cache;
    auto const next =
        std::ranges::upper_bound(cache->fClientPurges, after, {}, &ClientPurge::fAdded);
    if (next == cache->fClientPurges.end() || next->fAdded > until) {
        return nullptr;
    }
    after = next->fAdded;
    return next->fProc;
}

// By the time of adding, not by position: a procedure may remove itself and others, and add some,
// which are not called any more. One that throws ends it.
void PurgeAllStaticCaches() {
    unsigned long const until = GetCacheTime();
    unsigned long after = 0;
    while (auto* const purge = NextClientPurge(after, until)) {
        purge();
    }
}

void AddClientPurge(void (*purge)(), long flags) {
    if (!purge || flags != 0) {
        return;
    }
    AtRow(/*failure=*/false, [&] {
        Lock const cache;
        auto& known = cache->fClientPurges;
        if (std::ranges::find(known, purge, &ClientPurge::fProc) == known.end()) {
            ExpectMemory();
            known.push_back({purge, ++cache->fTime});
        }
        return true;
    });
}

void RemoveClientPurge(void (*purge)(), long flags) {
    Lock const cache;
    if (purge && flags == 0) {
        std::erase_if(
            cache->fClientPurges, [=](ClientPurge const& known) { return known.fProc == purge; });
    }
}

BIBCacheSet* NewCacheSet() {
    return AtRow<BIBCacheSet*>(nullptr, [] { return NewObject<BIBCacheSet>(); });
}

void AddRefCacheSet(BIBCacheSet* set) {
    Lock const cache;
    if (set) {
        ++set->fRefs;
    }
}

void DeleteCacheSet(BIBCacheSet* set) {
    Lock const cache;
    if (!set || --set->fRefs != 0) {
        return;
    }
    while (!set->fMembers.empty()) {
        LeaveSet(cache, *set->fMembers.front());
    }
    DeleteObject(set);
}

int SearchForID(BIBCacheSet* set, BIBCacheID* id) {
    Lock const cache;
    return set && id && id->fSet == set && id->fData ? 1 : 0;
}

void RemoveID(BIBCacheID* id) {
    DroppedData dropped;
    Lock const cache;
    if (id) {
        dropped = Drop(cache, *id);
    }
}

std::size_t CountMembers(BIBCacheSet const& set) {
    Lock const cache;
    return set.fMembers.size();
}

// Moves the first id of a set to its end and drops its data.
void DropFirst(BIBCacheSet& set) {
    DroppedData dropped;
    Lock const cache;
    if (!set.fMembers.empty()) {
        BIBCacheID& first = *set.fMembers.front();
        first.fMembership.MoveTo(set.fMembers);
        dropped = Drop(cache, first);
    }
}

void RemoveIDs(BIBCacheSet* set) {
    if (!set) {
        return;
    }
    // A purge procedure may give up what seemed the last reference.
    AddRefCacheSet(set);
    for (std::size_t count = CountMembers(*set); count != 0; --count) {
        DropFirst(*set);
    }
    DeleteCacheSet(set);
}

} // namespace

BIBRT_DEFINE_TABLE(BIBCacheInterface, BIB_CACHE_INTERFACE_ROWS, 23)

} // namespace bibrt
