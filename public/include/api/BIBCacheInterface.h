// The runtime's cache: data that is kept while memory allows and may be purged at any time.
//
// A cache id identifies one entry and holds its data, its cost in bytes and a lock count. Entries
// without a lock may be purged, the least recently used one first.
#pragma once

#include "api/BIBTable.h"

typedef struct BIBCacheID BIBCacheID;
typedef struct BIBCacheSet BIBCacheSet;
typedef struct BIBCachePurge BIBCachePurge;

// A new id without data, with one reference for the caller; null if memory runs out.
typedef BIBCacheID* (*BIBCacheNewCacheIDProc)(void);

// Add and release a reference. Releasing the last one drops the data. Both accept null.
typedef void (*BIBCacheAddRefProc)(BIBCacheID* id);
typedef void (*BIBCacheReleaseProc)(BIBCacheID* id);

// Adds id to set, or removes it from its set if set is null. Nonzero on success. A set owns no
// references: an id leaves its set when it is destroyed.
typedef int (*BIBCacheAttachProcV2)(BIBCacheID* id, BIBCacheSet* set);

// Stores data with its cost in bytes under id, after dropping any earlier data. purgeProc (may be
// null) is called on data whenever it is dropped.
typedef void (*BIBCacheAddProc)(
    BIBCacheID* id, void* data, unsigned long cost, void (*purgeProc)(void*));

// Change and return the cost in bytes; 0 without data.
typedef void (*BIBCacheUpdateCostProc)(BIBCacheID* id, unsigned long cost);
typedef unsigned long (*BIBCacheReturnCostProc)(BIBCacheID* id);

// Locks the data and returns it; null, and no lock, if there is none.
typedef void* (*BIBCacheMarkNoPurgeProcV2)(BIBCacheID* id);

// Removes one lock.
typedef void (*BIBCacheMarkPurgeProc)(BIBCacheID* id);

// A counter that increases with each use of an entry.
typedef unsigned long (*BIBCacheGetCacheTimeProc)(void);

// The total cost of all entries in bytes.
typedef unsigned long (*BIBCurrentCacheSizeProc)(void);

// A purge of the unlocked entries that were last used before it began; null if memory runs out. The
// caller deletes it.
typedef BIBCachePurge* (*BIBCacheNewCachePurgeProc)(void);

// Drops the least recently used entry and stores its cost in *cost (may be null). Zero if none is
// left.
typedef int (*BIBCachePurgeNextBlockProc)(BIBCachePurge* purge, unsigned long* cost);

// Ends a purge. Accepts null.
typedef void (*BIBCacheDeleteCachePurgeProc)(BIBCachePurge* purge);

// Calls every client purge procedure.
typedef void (*BIBCachePurgeAllStaticCachesProc)(void);

// Adds or removes a procedure that empties a cache owned by the client. flags must be 0. Adding a
// procedure twice has no further effect; removing an unknown one has none.
typedef void (*BIBCacheAddRemoveClientPurgeProcV2)(void (*purge)(void), long flags);

// A new empty set with one reference for the caller; null if memory runs out.
typedef BIBCacheSet* (*BIBCacheNewCacheSetProc)(void);

// Add and release a reference. When the last one is released, all ids leave the set. Both accept
// null.
typedef void (*BIBCacheAddRefCacheSetProc)(BIBCacheSet* set);
typedef void (*BIBCacheDeleteCacheSetProc)(BIBCacheSet* set);

// Nonzero if id is in set and has data.
typedef int (*BIBCacheSearchForIDProc)(BIBCacheSet* set, BIBCacheID* id);

// Drop the data of id, or of all ids in set, locked or not.
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
