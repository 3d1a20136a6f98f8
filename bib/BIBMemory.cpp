#include "bib/BIBMemory.h"

namespace BIB_T_NMT {

bool CBIBMemory::Init() {
    TBIBInterfaceClient<BIBMemoryInterface>::CheckInterface();
    return true;
}

void* CBIBMemory::Alloc(unsigned long size) {
    void* const block = GetProcs<BIBMemoryInterface>()->Alloc(size);
    if (block == nullptr) {
        ThrowMemError();
    }
    return block;
}

void CBIBMemory::Free(void* block) {
    GetProcs<BIBMemoryInterface>()->Free(block);
}

void CBIBMemory::ThrowMemError() {
    throw CBIBError(CBIBError::GetMemError());
}

} // namespace BIB_T_NMT
