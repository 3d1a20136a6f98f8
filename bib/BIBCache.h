// The runtime's cache service, as far as static caches need it.
#pragma once

#include "api/BIBCacheInterface.h"
#include "bib/BIBClient.h"
#include "bib/BIBInterfaceClient.h"
#include "bib/LazyTerminate.h"

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

// A cache in static storage. The runtime may purge from any thread: an element that holds anything
// needs a protection of its own.
class CBIBStaticCacheBase : public double_linked_list_element<CBIBStaticCacheBase, BIBDLLEParent> {
public:
    using List = no_construct_double_linked_list<CBIBStaticCacheBase, BIBDLLEParent>;

    CBIBStaticCacheBase() noexcept : double_linked_list_element(fList, /*atEnd=*/false) {}

    // Empties the cache.
    virtual void Clear() = 0;

    static List& GetfList() noexcept { return fList; }
    static bool IsAcceptingCaches() noexcept { return fAcceptingCaches; }

    // Asks the runtime to purge through CallClearAll, and takes that back, if there is any cache.
    static void LinkToBIB();
    static void UnlinkFromBIB();

    // Empties every cache, the newest first.
    static void ClearAll();

private:
    static List fList;
    static bool fAcceptingCaches;
};

} // namespace BIB_T_NMT

// CBIBStaticCacheBase::ClearAll(), in the form that the runtime calls.
void CallClearAll();
