#include "bib/BIBClient.h"

#include "bib/BIBCache.h"
#include "bib/BIBContainer.h"
#include "bib/BIBError.h"
#include "bib/BIBInterfaceClient.h"
#include "bib/BIBMemory.h"
#include "bib/BIBStringAtom.h"
#include "bib/LazyTerminate.h"

#include <cstring>

namespace BIB_T_NMT {

BIBLookupProc gGetProc = nullptr;
BIBRegisterProcAddressProc gRegisterProc = nullptr;
BIBReportErrorProc gErrorProc = nullptr;
BIBUnregisterInterfaceProc gUnregisterInterfaceProc = nullptr;
BIBGetUnregisterCountAddrProc gGetUnregisterCountAddrProc = nullptr;
BIBIsMultiThreadedProc gBIBIsMultiThreadedProc = nullptr;
unsigned long* gBIBUnregisterCount = nullptr;
bool gFinishedInit = false;

namespace {

template <class Proc>
void LookUpBootstrap(Proc& proc, char const* name) {
    proc = reinterpret_cast<Proc>(gGetProc("BIB", name, name));
}

// Every name is looked up before any result is tested.
bool BindBootstrap() {
    LookUpBootstrap(gRegisterProc, "BIBRegisterProcAddress");
    LookUpBootstrap(gErrorProc, "BIBReportError");
    LookUpBootstrap(gUnregisterInterfaceProc, "BIBUnregisterInterface");
    LookUpBootstrap(gGetUnregisterCountAddrProc, "BIBGetUnregisterCountAddr");
    LookUpBootstrap(gBIBIsMultiThreadedProc, "BIBIsMultiThreaded");
    return gRegisterProc != nullptr && gErrorProc != nullptr &&
           gUnregisterInterfaceProc != nullptr && gGetUnregisterCountAddrProc != nullptr &&
           gBIBIsMultiThreadedProc != nullptr;
}

bool BindCoreInterfaces() {
    return CBIBContainer::Init() && CBIBError::Init() &&
           PeekProcs<BIBStringInterface>() != nullptr && CBIBMemory::Init();
}

bool InitializeOne(LazyTerminate& object) noexcept {
    try {
        return object.Initialize();
    } catch (...) {
        return false;
    }
}

} // namespace

// A failure leaves gGetProc set, so the next call returns true although the client is not usable.
// BIBClientTerminate resets it.
bool BIBClientInit(BIBLookupProc lookup) {
    if (gGetProc != nullptr) {
        return true;
    }
    if (lookup == nullptr) {
        return false;
    }
    gGetProc = lookup;
    if (!BindBootstrap()) {
        return false;
    }
    gBIBUnregisterCount = gGetUnregisterCountAddrProc();
    gFinishedInit = false;
    if (!BindCoreInterfaces()) {
        return false;
    }
    gFinishedInit = true;
    if (!LazyTerminate::InitializeAll()) {
        return false;
    }
    CBIBStaticCacheBase::LinkToBIB();
    return true;
}

void BIBClientTerminate() {
    if (gGetProc == nullptr) {
        return;
    }
    CBIBStaticCacheBase::UnlinkFromBIB();
    CBIBStaticCacheBase::ClearAll();
    LazyTerminate::TerminateAll();
    CBIBError::Close();
    gGetProc = nullptr;
}

void* BIBGetProcAddress(char const* interfaceName, char const* procName, char const* procType) {
    if (gGetProc == nullptr) {
        return nullptr;
    }
    void* const proc = gGetProc(interfaceName, procName, procType);
    if (proc == nullptr && gFinishedInit) {
        CBIBError::ThrowError("", "BIB", 0, nullptr, nullptr);
    }
    return proc;
}

int BIBRegisterProcAddress(
    char const* interfaceName, char const* procName, char const* procType, void* proc) {
    return gRegisterProc(interfaceName, procName, procType, proc);
}

int BIBUnregisterInterface(char const* interfaceName) {
    return gUnregisterInterfaceProc(interfaceName);
}

int BIBReportError(char const* message) {
    return gErrorProc != nullptr ? gErrorProc(message) : 0;
}

void* CBIBClientBase::operator new(std::size_t size) {
    return CBIBMemory::Alloc(size);
}

void CBIBClientBase::operator delete(void* block) noexcept {
    CBIBMemory::Free(block);
}

void StoreProc(void** procs, unsigned long slot, void* proc) noexcept {
    // Copied as bytes: the slot has another pointer type, and storing through a void* would break
    // the aliasing rules.
    std::memcpy(procs + slot, &proc, sizeof proc);
}

int BIBLoadProcTable(
    _t_BIBFTabEntry const* table,
    unsigned long count,
    char const* interfaceName,
    void** procs,
    int /*unused*/) {
    for (unsigned long slot = count; slot-- > 0;) {
        void* const proc = BIBGetProcAddress(interfaceName, table[slot].name, table[slot].procType);
        StoreProc(procs, slot, proc);
        if (proc == nullptr) {
            return 0;
        }
    }
    return 1;
}

int BIBRegisterProcTable(
    _t_BIBFTabRegEntry const* table, unsigned long count, char const* interfaceName) {
    for (unsigned long row = 0; row < count; ++row) {
        auto const& entry = table[row];
        if (BIBRegisterProcAddress(interfaceName, entry.name, entry.procType, entry.proc) == 0) {
            return 0;
        }
    }
    return 1;
}

bool LazyTerminate::InitializeAll() {
    LazyTerminate* object = fList.GetFirstElement();
    while (object != nullptr && InitializeOne(*object)) {
        object = object->GetNextElement();
    }
    if (object == nullptr) {
        return true;
    }
    LazyTerminate const* const failed = object;
    for (object = fList.GetFirstElement(); object != failed; object = object->GetNextElement()) {
        object->Terminate();
    }
    return false;
}

void LazyTerminate::TerminateAll() {
    for (LazyTerminate* object = fList.GetFirstElement(); object != nullptr;
         object = object->GetNextElement()) {
        object->Terminate();
    }
}

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
