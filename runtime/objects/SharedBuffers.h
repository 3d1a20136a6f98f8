// Counted blocks of bytes. Reference counts are thread safe.
#pragma once

#include "api/BIBSharedBuffInterface.h"
#include "runtime/objects/Memory.h"

#include <atomic>
#include <cstddef>
#include <memory>

// A buffer whose bytes stand behind the structure or in a block that was taken over.
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
    void (*fDeleteProc)(void*); // null: nothing is called on the bytes
};

namespace bibrt {

// Adds a reference, gives one up. Both accept null.
void AddBufferRef(BIBSharedBuffer* buffer) noexcept;
void ReleaseBuffer(BIBSharedBuffer* buffer) noexcept;

struct ReleaseBufferDeleter {
    void operator()(BIBSharedBuffer* buffer) const noexcept { ReleaseBuffer(buffer); }
};

// A counted reference, which was the caller's, or none.
using BufferRef = std::unique_ptr<BIBSharedBuffer, ReleaseBufferDeleter>;

} // namespace bibrt
