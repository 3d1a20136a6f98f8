#include "runtime/objects/SharedBuffers.h"

#include "runtime/objects/Container.h"
#include "runtime/objects/Errors.h"
#include "runtime/objects/Memory.h"
#include "runtime/objects/Tables.h"

namespace bibrt {

namespace {

BIBSharedBuffer* NewBuffer(
    unsigned long size,
    void* block,
    void (*deleteProc)(void*),
    BIBSharedBuffPurgeProc /*purgeProc*/,
    void* /*clientData*/) {
    if (!block && size > kMaxExtra) {
        return nullptr;
    }
    // A buffer that allocates its own bytes never calls a delete procedure.
    return AtRow<BIBSharedBuffer*>(nullptr, [&] {
        return NewObjectWith<BIBSharedBuffer>(
            block ? 0 : size, block, size, block ? deleteProc : nullptr);
    });
}

int DeleteUnowned(BIBSharedBuffer* buffer) {
    long only = 1;
    if (!buffer || !buffer->fRefs.compare_exchange_strong(only, 0)) {
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
        ++buffer->fRefs;
    }
}

void ReleaseBuffer(BIBSharedBuffer* buffer) noexcept {
    if (buffer && --buffer->fRefs == 0) {
        DeleteObject(buffer);
    }
}

BIBRT_DEFINE_TABLE(BIBSharedBuffInterface, BIB_SHARED_BUFF_INTERFACE_ROWS, 6)

} // namespace bibrt

BIBSharedBuffer::~BIBSharedBuffer() {
    bibrt::CallDeleteProc(fDeleteProc, fData);
}
