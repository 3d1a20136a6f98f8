// The runtime's cache service, limited to what static caches need.
#pragma once

#include "api/BIBCacheInterface.h"
#include "bib/BIBClient.h"
#include "bib/BIBInterfaceClient.h"
#include "bib/LazyTerminate.h"

namespace BIB_T_NMT {

BIB_DECLARE_INTERFACE(BIBCacheInterface, BIBCacheTraits, BIB_CACHE_INTERFACE_ROWS, 23);

// The cache service. All members are static.
class CBIBCache {
public:
    // Binds the table. Returns true, or throws the CBIBError "Missing Interface".
    static bool Init();

    // Adds or removes a procedure that the runtime calls to purge. Both throw as Init() does.
    static void AddClientPurge(void (*purge)());
    static void RemoveClientPurge(void (*purge)());
};

// Locks of cache entries.
class CBIBCacheLock {
public:
    struct SkipNoPurge_t {};

    // A tag that requests a lock without marking the entry.
    static SkipNoPurge_t SkipNoPurge; // NOLINT(readability-identifier-naming): its fixed name
};

// A cache in static storage. The runtime may purge it from any thread, so a cache that holds data
// must synchronize access to it.
class CBIBStaticCacheBase : public double_linked_list_element<CBIBStaticCacheBase, BIBDLLEParent> {
public:
    using List = no_construct_double_linked_list<CBIBStaticCacheBase, BIBDLLEParent>;

    CBIBStaticCacheBase() noexcept : double_linked_list_element(fList, /*atEnd=*/false) {}

    // Empties the cache.
    virtual void Clear() = 0;

    static List& GetfList() noexcept { return fList; }
    static bool IsAcceptingCaches() noexcept { return fAcceptingCaches; }

    // LinkToBIB asks the runtime to purge through CallClearAll; UnlinkFromBIB cancels that. Neither
    // calls the runtime if there is no cache.
    static void LinkToBIB();
    static void UnlinkFromBIB();

    // Empties every cache, newest first.
    static void ClearAll();

private:
    static List fList;
    static bool fAcceptingCaches;
};

} // namespace BIB_T_NMT

// CBIBStaticCacheBase::ClearAll() as a function that the runtime can call.
void CallClearAll();
