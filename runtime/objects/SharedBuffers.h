// Reference-counted byte buffers. Reference counts are thread safe.
#pragma once

#include "api/BIBSharedBuffInterface.h"
#include "runtime/objects/Memory.h"

#include <atomic>
#include <cstddef>
#include <memory>

// A buffer. Its bytes follow the structure, or lie in a block that it adopted.
struct alignas(std::max_align_t) BIBSharedBuffer : bibrt::Counted<BIBSharedBuffer> {
    BIBSharedBuffer(void* block, unsigned long size, void (*deleteProc)(void*)) noexcept
        : fData(block ? block : this + 1),
          fSize(size),
          fDeleteProc(deleteProc) {}
    BIBSharedBuffer(BIBSharedBuffer const&) = delete;
    BIBSharedBuffer& operator=(BIBSharedBuffer const&) = delete;
    ~BIBSharedBuffer();

    std::atomic<long> fRefs = 1;
    void* fData; // never null
    unsigned long fSize;
    void (*fDeleteProc)(void*); // null: no procedure is called
};

namespace bibrt {

// Add and release a reference. Null is ignored.
void AddBufferRef(BIBSharedBuffer* buffer) noexcept;
void ReleaseBuffer(BIBSharedBuffer* buffer) noexcept;

struct ReleaseBufferDeleter {
    void operator()(BIBSharedBuffer* buffer) const noexcept { ReleaseBuffer(buffer); }
};

// Owns a reference to a buffer, or none. A raw pointer passes its reference to this.
using BufferRef = std::unique_ptr<BIBSharedBuffer, ReleaseBufferDeleter>;

} // namespace bibrt
