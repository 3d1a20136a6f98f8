#include "bib/BIBStaticCache.h"

#include "bib/BIBCache.h"

namespace BIB_T_NMT {

void CBIBStaticCacheBase::LinkToBIB() {
    if (fList.GetFirstElement() != nullptr) {
        CBIBCache::AddClientPurge(&CallClearAll);
    }
    fAcceptingCaches = true;
}

void CBIBStaticCacheBase::UnlinkFromBIB() {
    fAcceptingCaches = false;
    if (fList.GetFirstElement() != nullptr) {
        CBIBCache::RemoveClientPurge(&CallClearAll);
    }
}

void CBIBStaticCacheBase::ClearAll() {
    for (auto* cache = fList.GetFirstElement(); cache != nullptr; cache = cache->GetNextElement()) {
        cache->Clear();
    }
}

} // namespace BIB_T_NMT

void CallClearAll() {
    BIB_T_NMT::CBIBStaticCacheBase::ClearAll();
}
