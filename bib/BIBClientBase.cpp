#include "bib/BIBClientBase.h"

#include "bib/BIBMemory.h"

namespace BIB_T_NMT {

void* CBIBClientBase::operator new(std::size_t size) {
    return CBIBMemory::Alloc(size);
}

void CBIBClientBase::operator delete(void* block) noexcept {
    CBIBMemory::Free(block);
}

} // namespace BIB_T_NMT
