#include "runtime/objects/Memory.h"

#include "api/BIBMemoryInterface.h"
#include "runtime/objects/FailurePoint.h"
#include "runtime/objects/Tables.h"

#include <atomic>
#include <cstdlib>

namespace bibrt {

namespace {

struct alignas(std::max_align_t) BlockHeader {
    std::size_t fSize;
};

// Sanitized allocators stop the program for sizes from twice this on instead of giving null.
constexpr std::size_t kMaxBlock = std::size_t(1) << 39;

constinit std::atomic<unsigned long> gLiveBlocks = 0;

BlockHeader* HeaderOf(void* block) noexcept {
    return static_cast<BlockHeader*>(block) - 1;
}

// The header null stands for a new block.
void* ResizeBlock(BlockHeader* header, std::size_t size) noexcept {
    if (gAllocationPoint.Attempt() || size > kMaxBlock) {
        return nullptr;
    }
    void* const raw = std::realloc(header, sizeof(BlockHeader) + size);
    return raw ? new (raw) BlockHeader{size} + 1 : nullptr;
}

void* Alloc(unsigned long size) {
    return AllocBlock(size);
}

void* Realloc(void* block, unsigned long size) {
    return block ? ResizeBlock(HeaderOf(block), size) : AllocBlock(size);
}

void Free(void* block) {
    FreeBlock(block);
}

unsigned long GetBlockSize(void* block) {
    return block ? HeaderOf(block)->fSize : 0;
}

} // namespace

void* AllocBlock(std::size_t size) noexcept {
    void* const block = ResizeBlock(nullptr, size);
    if (block) {
        ++gLiveBlocks;
    }
    return block;
}

void FreeBlock(void* block) noexcept {
    if (block) {
        --gLiveBlocks;
        std::free(HeaderOf(block));
    }
}

unsigned long CountLiveBlocks() noexcept {
    return gLiveBlocks;
}

void ExpectMemory() {
    if (gAllocationPoint.Attempt()) {
        throw std::bad_alloc();
    }
}

BIBRT_DEFINE_TABLE(BIBMemoryInterface, BIB_MEMORY_INTERFACE_ROWS, 4)

} // namespace bibrt
