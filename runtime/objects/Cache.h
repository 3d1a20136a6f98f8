// The cache: ids that name data which may be dropped at any time.
//
// One lock guards everything; the procedures of callers are called outside it, and any thread may
// call any operation.
#pragma once

#include <mutex>

#include "api/BIBCacheInterface.h"
#include "runtime/objects/Container.h"

namespace bibrt {

// A ring through an element that has a member of this kind; alone it is a ring of its own.
template <class Element>
struct RingLink {
    explicit RingLink(Element* owner) noexcept : fOwner(owner) {}
    RingLink(RingLink const&) = delete;
    RingLink& operator=(RingLink const&) = delete;
    ~RingLink() { Leave(); }

    bool IsAlone() const noexcept { return fNext == this; }

    void Leave() noexcept {
        fPrevious->fNext = fNext;
        fNext->fPrevious = fPrevious;
        fPrevious = fNext = this;
    }

    // Leaves its ring and enters that of other, just before it.
    void EnterBefore(RingLink& other) noexcept {
        Leave();
        fPrevious = std::exchange(other.fPrevious, this);
        fPrevious->fNext = this;
        fNext = &other;
    }

    Element* fOwner; // null for the head of a ring
    RingLink* fPrevious = this;
    RingLink* fNext = this;
};

} // namespace bibrt

struct BIBCacheID {
    BIBCacheID() noexcept : fAge(this), fMembership(this) {}

    long fRefs = 1;
    void* fData = nullptr;
    void (*fPurgeProc)(void*) = nullptr;
    unsigned long fCost = 0;
    unsigned long fLocks = 0;
    unsigned long fLastUse = 0;
    BIBCacheSet* fSet = nullptr;
    bibrt::RingLink<BIBCacheID> fAge;        // among the ids with data
    bibrt::RingLink<BIBCacheID> fMembership; // in its set
};

struct BIBCacheSet {
    long fRefs = 1;
    bibrt::RingLink<BIBCacheID> fMembers{nullptr};
};

struct BIBCachePurge {
    unsigned long fLatestUse; // entries that were used after this stay
};

namespace bibrt {

// Data on its way out of the cache. Its purge procedure is called when this goes, which must be
// outside the lock.
class DroppedData {
public:
    DroppedData() noexcept = default;
    DroppedData(void* data, void (*purgeProc)(void*)) noexcept
        : fData(data),
          fPurgeProc(purgeProc) {}
    DroppedData(DroppedData const&) = delete;
    DroppedData& operator=(DroppedData const&) = delete;
    DroppedData& operator=(DroppedData&&) = delete;
    DroppedData(DroppedData&& other) noexcept
        : fData(std::exchange(other.fData, nullptr)),
          fPurgeProc(std::exchange(other.fPurgeProc, nullptr)) {}
    ~DroppedData() {
        if (fData) {
            CallDeleteProc(fPurgeProc, fData);
        }
    }

private:
    void* fData = nullptr;
    void (*fPurgeProc)(void*) = nullptr;
};

// The one cache, which is never destroyed.
class Cache {
public:
    static Cache& The();

    // As the rows of the same names say, for arguments that are not null.
    void Release(BIBCacheID& id) noexcept;
    void Attach(BIBCacheID& id, BIBCacheSet* set) noexcept;
    void Add(BIBCacheID& id, void* data, unsigned long cost, void (*purgeProc)(void*)) noexcept;
    void UpdateCost(BIBCacheID& id, unsigned long cost) noexcept;
    void* MarkNoPurge(BIBCacheID& id) noexcept;
    void RemoveID(BIBCacheID& id) noexcept;
    void RemoveIDs(BIBCacheSet& set) noexcept;
    void DeleteSet(BIBCacheSet& set) noexcept;

    // Drops the entry that was used longest ago, unlocked, and not after latestUse. False for none.
    bool PurgeOldest(unsigned long latestUse, unsigned long& cost) noexcept;

    // Calls the client procedures. One that throws ends it. Adds, which throws std::bad_alloc, and
    // removes one.
    void CallClientPurges();
    void AddClientPurge(void (*purge)());
    void RemoveClientPurge(void (*purge)()) noexcept;

    // Runs work, which may read and write what an id or the cache holds, under the lock.
    template <class Work>
    auto Locked(Work work) noexcept {
        std::lock_guard const guard(fLock);
        return work();
    }

    // REQUIRES: under the lock.
    unsigned long Time() const noexcept { return fTime; }
    unsigned long Size() const noexcept { return fSize; }

private:
    DroppedData Drop(BIBCacheID& id) noexcept;
    void Use(BIBCacheID& id) noexcept;
    static void LeaveSet(BIBCacheID& id) noexcept;
    DroppedData DropFirst(BIBCacheSet& set) noexcept;

    struct ClientPurge {
        void (*fProc)();
        unsigned long fAdded; // when
    };
    // The first that was added after a time and not after another; null for none.
    void (*NextClientPurge(unsigned long& after, unsigned long until) noexcept)();

    std::mutex fLock;
    RingLink<BIBCacheID> fByAge{nullptr}; // the ids with data, the one used longest ago first
    unsigned long fTime = 0;
    unsigned long fSize = 0;
    ResidentVector<ClientPurge> fClientPurges; // in the order of their adding
};

} // namespace bibrt
