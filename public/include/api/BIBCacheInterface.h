// The runtime's cache: data that is kept while memory allows and can be purged at any time.
//
// A cache id names one entry and carries its data, its cost in bytes and a count of locks. Entries
// without a lock may be purged, the one that was used longest ago first.
#pragma once

#include "api/BIBTable.h"

typedef struct BIBCacheID BIBCacheID;
typedef struct BIBCacheSet BIBCacheSet;
typedef struct BIBCachePurge BIBCachePurge;

// A new id without data, with one reference for the caller; null when memory runs out.
typedef BIBCacheID* (*BIBCacheNewCacheIDProc)(void);

// Adds a reference, gives one up. The last one drops the data. Both accept null.
typedef void (*BIBCacheAddRefProc)(BIBCacheID* id);
typedef void (*BIBCacheReleaseProc)(BIBCacheID* id);

// Puts id into set (null: takes it out of its set). Non-zero on success. A set holds no reference:
// an id leaves its set when it goes.
typedef int (*BIBCacheAttachProcV2)(BIBCacheID* id, BIBCacheSet* set);

// Stores data of that cost in bytes under id; purgeProc (may be null) is called on data when it is
// dropped, for whatever reason. Data that was there is dropped first.
typedef void (*BIBCacheAddProc)(
    BIBCacheID* id, void* data, unsigned long cost, void (*purgeProc)(void*));

// Changes the cost; the cost, 0 without data.
typedef void (*BIBCacheUpdateCostProc)(BIBCacheID* id, unsigned long cost);
typedef unsigned long (*BIBCacheReturnCostProc)(BIBCacheID* id);

// Locks the data and gives it; null, and no lock, when there is none.
typedef void* (*BIBCacheMarkNoPurgeProcV2)(BIBCacheID* id);

// Undoes one lock.
typedef void (*BIBCacheMarkPurgeProc)(BIBCacheID* id);

// A clock that moves on with each use of an entry.
typedef unsigned long (*BIBCacheGetCacheTimeProc)(void);

// The cost of all entries together, in bytes.
typedef unsigned long (*BIBCurrentCacheSizeProc)(void);

// A purge that goes through the entries that are unlocked and were used last before it began; null
// when memory runs out. The caller deletes it.
typedef BIBCachePurge* (*BIBCacheNewCachePurgeProc)(void);

// Drops the entry used longest ago; its cost through *cost (may be null). Zero when none is left.
typedef int (*BIBCachePurgeNextBlockProc)(BIBCachePurge* purge, unsigned long* cost);

// Ends a purge. Accepts null.
typedef void (*BIBCacheDeleteCachePurgeProc)(BIBCachePurge* purge);

// Calls every client purge procedure.
typedef void (*BIBCachePurgeAllStaticCachesProc)(void);

// Adds or removes a procedure that empties a cache of the client's own. flags must be 0. Adding one
// twice keeps it once; removing an unknown one does nothing.
typedef void (*BIBCacheAddRemoveClientPurgeProcV2)(void (*purge)(void), long flags);

// A new empty set with one reference for the caller; null when memory runs out.
typedef BIBCacheSet* (*BIBCacheNewCacheSetProc)(void);

// Adds a reference, gives one up. With the last one the ids leave the set. Both accept null.
typedef void (*BIBCacheAddRefCacheSetProc)(BIBCacheSet* set);
typedef void (*BIBCacheDeleteCacheSetProc)(BIBCacheSet* set);

// Non-zero when id is in set and holds data.
typedef int (*BIBCacheSearchForIDProc)(BIBCacheSet* set, BIBCacheID* id);

// Drops the data of id, or of all ids in set, locked or not.
typedef void (*BIBCacheRemoveIDProc)(BIBCacheID* id);
typedef void (*BIBCacheRemoveIDsProc)(BIBCacheSet* set);

// clang-format off
#define BIB_CACHE_INTERFACE_ROWS(ROW)                           \
    ROW(NewCacheID,           BIBCacheNewCacheIDProc)           \
    ROW(AddRef,               BIBCacheAddRefProc)               \
    ROW(Release,              BIBCacheReleaseProc)              \
    ROW(Attach,               BIBCacheAttachProcV2)             \
    ROW(Add,                  BIBCacheAddProc)                  \
    ROW(UpdateCost,           BIBCacheUpdateCostProc)           \
    ROW(ReturnCost,           BIBCacheReturnCostProc)           \
    ROW(MarkNoPurge,          BIBCacheMarkNoPurgeProcV2)        \
    ROW(MarkPurge,            BIBCacheMarkPurgeProc)            \
    ROW(GetCacheTime,         BIBCacheGetCacheTimeProc)         \
    ROW(CurrentCacheSize,     BIBCurrentCacheSizeProc)          \
    ROW(NewCachePurge,        BIBCacheNewCachePurgeProc)        \
    ROW(PurgeNextBlock,       BIBCachePurgeNextBlockProc)       \
    ROW(DeleteCachePurge,     BIBCacheDeleteCachePurgeProc)     \
    ROW(PurgeAllStaticCaches, BIBCachePurgeAllStaticCachesProc) \
    ROW(AddClientPurge,       BIBCacheAddRemoveClientPurgeProcV2) \
    ROW(RemoveClientPurge,    BIBCacheAddRemoveClientPurgeProcV2) \
    ROW(NewCacheSet,          BIBCacheNewCacheSetProc)          \
    ROW(AddRefCacheSet,       BIBCacheAddRefCacheSetProc)       \
    ROW(DeleteCacheSet,       BIBCacheDeleteCacheSetProc)       \
    ROW(SearchForID,          BIBCacheSearchForIDProc)          \
    ROW(RemoveID,             BIBCacheRemoveIDProc)             \
    ROW(RemoveIDs,            BIBCacheRemoveIDsProc)
// clang-format on

// The table of "BIBCacheInterface".
typedef struct _t_BIBCacheInterface {
    BIB_CACHE_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_BIBCacheInterface;
