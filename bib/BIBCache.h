// The runtime's cache service, as far as static caches need it.
#pragma once

#include "api/BIBCacheInterface.h"
#include "bib/BIBInterfaceClient.h"

namespace BIB_T_NMT {

BIB_DECLARE_INTERFACE(BIBCacheInterface, BIBCacheTraits, BIB_CACHE_INTERFACE_ROWS, 23);

// The cache service. No instances.
class CBIBCache {
public:
    // Checks the table: true, or a thrown CBIBError "Missing Interface".
    static bool Init();

    // Adds or removes a procedure that the runtime calls to purge. Throw as Init().
    static void AddClientPurge(void (*purge)());
    static void RemoveClientPurge(void (*purge)());
};

// Locks of cache entries.
class CBIBCacheLock {
public:
    struct SkipNoPurge_t {};

    // A tag that asks for a lock without a mark on the entry.
    static SkipNoPurge_t SkipNoPurge; // NOLINT(readability-identifier-naming): its fixed name
};

} // namespace BIB_T_NMT
