#include "bib/BIBCache.h"

namespace BIB_T_NMT {

bool CBIBCache::Init() {
    TBIBInterfaceClient<BIBCacheInterface>::CheckInterface();
    return true;
}

void CBIBCache::AddClientPurge(void (*purge)()) {
    Init();
    GetProcs<BIBCacheInterface>()->AddClientPurge(purge, 0);
}

void CBIBCache::RemoveClientPurge(void (*purge)()) {
    Init();
    GetProcs<BIBCacheInterface>()->RemoveClientPurge(purge, 0);
}

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
