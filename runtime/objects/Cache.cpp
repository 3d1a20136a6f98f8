// The cache: ids of data that may be dropped at any time.
//
// One lock protects all data. Callers' procedures are called without it, and any thread may call
// any row.
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

// The list node of an id. It moves between lists without allocating.
class CacheLink {
public:
    explicit CacheLink(BIBCacheID* id) : fHome{id} {}

    // Moves the node from its list to the end of another.
    void MoveTo(CacheIDs& list) noexcept {
        list.splice(list.end(), *fList, fNode);
        fList = &list;
    }
    void Leave() noexcept { MoveTo(fHome); }

private:
    CacheIDs fHome; // holds the node while it is in no list
    CacheIDs* fList = &fHome;
    CacheIDs::iterator fNode = fHome.begin();
};

struct Purger {
    void operator()(void* data) const noexcept { CallDeleteProc(fProc, data); }

    void (*fProc)(void*) = nullptr;
};

// Data that leaves the cache; its destructor calls the purge procedure. Declared before the lock is
// taken, so that the procedure runs after the lock is released.
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
    bibrt::CacheLink fAge{this};        // in the list of ids with data
    bibrt::CacheLink fMembership{this}; // in the list of its set
};

struct BIBCacheSet {
    long fRefs = 1;
    bibrt::CacheIDs fMembers;
};

struct BIBCachePurge {
    unsigned long fLatestUse; // entries used after this time are kept
};

namespace bibrt {

namespace {

struct ClientPurge {
    void (*fProc)();
    unsigned long fAdded; // the cache time at which it was added
};

struct Cache {
    std::mutex fLock;
    CacheIDs fByAge; // the ids with data, the least recently used first
    unsigned long fTime = 0;
    unsigned long fSize = 0;
    std::vector<ClientPurge> fClientPurges; // in the order of fAdded
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

// The rows of the table.

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

// Drops the least recently used unlocked entry, unless it was used after latestUse. False if there
// is no such entry; otherwise sets cost to the cost of the entry.
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
    // Stored after the purge procedure has run, which may read the caller's value.
    if (cost) {
        *cost = freed;
    }
    return isFound ? 1 : 0;
}

void DeleteCachePurge(BIBCachePurge* purge) {
    DeleteObject(purge);
}

// The first procedure added after one time and not after another; null if there is none. Sets after
// to its time.
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

// Iterates by time of addition, not by position: a procedure may remove itself and others, and may
// add new ones, which are not called. An exception of a procedure ends the iteration.
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

// Moves the first id of a set to the end of the set and drops its data.
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
    // A purge procedure may release what would otherwise be the last reference.
    AddRefCacheSet(set);
    for (std::size_t count = CountMembers(*set); count != 0; --count) {
        DropFirst(*set);
    }
    DeleteCacheSet(set);
}

} // namespace

BIBRT_DEFINE_TABLE(BIBCacheInterface, BIB_CACHE_INTERFACE_ROWS, 23)

} // namespace bibrt
