// Static caches that the runtime may ask to purge.
#pragma once

#include "bib/BIBClientBase.h"
#include "bib/DoubleLinkedList.h"

namespace BIB_T_NMT {

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
