// Counted blocks of bytes. Reference counts are thread safe.
#pragma once

#include <atomic>
#include <cstddef>

#include "api/BIBSharedBuffInterface.h"

// A buffer whose bytes stand behind the structure or in a block that was taken over.
struct alignas(std::max_align_t) BIBSharedBuffer {
    BIBSharedBuffer(void* block, unsigned long size, void (*deleteProc)(void*)) noexcept;
    BIBSharedBuffer(BIBSharedBuffer const&) = delete;
    BIBSharedBuffer& operator=(BIBSharedBuffer const&) = delete;
    ~BIBSharedBuffer();

    long fRefs = 1; // atomic
    void* fData;    // never null
    unsigned long fSize;
    void (*fDeleteProc)(void*); // null: nothing is called on the bytes
};

namespace bibrt {

// Adds a reference, gives one up. Both accept null.
void AddBufferRef(BIBSharedBuffer* buffer) noexcept;
void ReleaseBuffer(BIBSharedBuffer* buffer) noexcept;

// The buffers that somebody holds.
unsigned long CountLiveBuffers() noexcept;

} // namespace bibrt
