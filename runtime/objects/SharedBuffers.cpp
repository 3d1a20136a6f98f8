#include "runtime/objects/SharedBuffers.h"

#include "runtime/objects/Boundary.h"
#include "runtime/objects/Container.h"
#include "runtime/objects/Counting.h"
#include "runtime/objects/Memory.h"
#include "runtime/objects/Tables.h"

namespace bibrt {

namespace {

constinit Counter gLiveBuffers;

BIBSharedBuffer* NewBuffer(
    unsigned long size,
    void* block,
    void (*deleteProc)(void*),
    BIBSharedBuffPurgeProc /*purgeProc*/,
    void* /*clientData*/) {
    if (!block && size > kMaxExtra) {
        return nullptr;
    }
    // A buffer that allocates its bytes has nothing to call a procedure on.
    return AtRow<BIBSharedBuffer*>(nullptr, [&] {
        return NewObjectWith<BIBSharedBuffer>(
            block ? 0 : size, block, size, block ? deleteProc : nullptr);
    });
}

int DeleteUnowned(BIBSharedBuffer* buffer) {
    if (!buffer) {
        return 0;
    }
    long only = 1;
    std::atomic_ref const refs(buffer->fRefs);
    if (!refs.compare_exchange_strong(only, 0, std::memory_order_acq_rel)) {
        return 0;
    }
    DeleteObject(buffer);
    return 1;
}

void AddRef(BIBSharedBuffer* buffer) {
    AddBufferRef(buffer);
}

void Release(BIBSharedBuffer* buffer) {
    ReleaseBuffer(buffer);
}

void* GetBuffer(BIBSharedBuffer* buffer) {
    return buffer ? buffer->fData : nullptr;
}

unsigned long GetSize(BIBSharedBuffer* buffer) {
    return buffer ? buffer->fSize : 0;
}

} // namespace

void AddBufferRef(BIBSharedBuffer* buffer) noexcept {
    if (buffer) {
        std::atomic_ref(buffer->fRefs).fetch_add(1, std::memory_order_relaxed);
    }
}

void ReleaseBuffer(BIBSharedBuffer* buffer) noexcept {
    if (buffer && TakeOne(std::atomic_ref(buffer->fRefs)) == 1) {
        DeleteObject(buffer);
    }
}

unsigned long CountLiveBuffers() noexcept {
    return gLiveBuffers.Get();
}

BIBRT_DEFINE_TABLE(
    SharedBuffTable,
    "BIBSharedBuffInterface",
    _t_BIBSharedBuffInterface,
    BIB_SHARED_BUFF_INTERFACE_ROWS,
    6)

} // namespace bibrt

BIBSharedBuffer::BIBSharedBuffer(
    void* block, unsigned long size, void (*deleteProc)(void*)) noexcept
    : fData(block ? block : this + 1),
      fSize(size),
      fDeleteProc(deleteProc) {
    bibrt::gLiveBuffers.Up();
}

BIBSharedBuffer::~BIBSharedBuffer() {
    bibrt::CallDeleteProc(fDeleteProc, fData);
    bibrt::gLiveBuffers.Down();
}
