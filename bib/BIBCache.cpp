#include "bib/BIBCache.h"

namespace BIB_T_NMT {

bool CBIBCache::Init() {
    TBIBInterfaceClient<BIBCacheInterface>::CheckInterface();
    return true;
}

void CBIBCache::AddClientPurge(void (*purge)()) {
    if (Init()) {
        GetProcs<BIBCacheInterface>()->AddClientPurge(purge, 0);
    }
}

void CBIBCache::RemoveClientPurge(void (*purge)()) {
    if (Init()) {
        GetProcs<BIBCacheInterface>()->RemoveClientPurge(purge, 0);
    }
}

} // namespace BIB_T_NMT
