#include "bib/BIBMemory.h"

#include "bib/BIBSharedBuffer.h"

namespace {

// Frees a block through its deleter unless it is released first.
class BIBAutoBuff {
public:
    BIBAutoBuff(void* buffer, void (*deleteProc)(void*)) noexcept
        : fBuffer(buffer),
          fDeleteProc(deleteProc) {}
    BIBAutoBuff(BIBAutoBuff const&) = delete;
    BIBAutoBuff& operator=(BIBAutoBuff const&) = delete;

    ~BIBAutoBuff() {
        if (fBuffer != nullptr && fDeleteProc != nullptr) {
            fDeleteProc(fBuffer);
        }
    }

    void release() noexcept { fBuffer = nullptr; } // NOLINT(readability-identifier-naming)

private:
    void* fBuffer;
    void (*fDeleteProc)(void*);
};

} // namespace

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

void CBIBMemory::ThrowMemError() {
    throw CBIBError(CBIBError::GetMemError());
}

void CBIBSharedBuff::Init() {
    TBIBInterfaceClient<BIBSharedBuffInterface>::CheckInterface();
}

BIBSharedBuffer* CBIBSharedBuff::NewBuffer(
    unsigned long size,
    void* block,
    void (*deleteProc)(void*),
    BIBSharedBuffPurgeProc purgeProc,
    void* clientData) {
    BIBAutoBuff guard(block, deleteProc);
    Init();
    BIBSharedBuffer* const buffer = GetProcs<BIBSharedBuffInterface>()->NewBuffer(
        size, block, deleteProc, purgeProc, clientData);
    if (buffer == nullptr) {
        CBIBMemory::ThrowMemError();
    }
    // The runtime owns the block from here on.
    guard.release();
    return buffer;
}

void BIBDeleteSharedBuff(void* block) {
    CBIBMemory::Free(block);
}

} // namespace BIB_T_NMT
