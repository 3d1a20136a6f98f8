#include "runtime/objects/Memory.h"

#include "api/BIBMemoryInterface.h"
#include "runtime/objects/FailurePoint.h"
#include "runtime/objects/Tables.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace bibrt {

namespace {

// Blocks for callers begin with their size.
struct alignas(std::max_align_t) BlockHeader {
    std::size_t fSize;
};

// Sanitizers abort the program for sizes of twice this or more, instead of returning null.
constexpr std::size_t kMaxBlock = sizeof(std::size_t) == 8
                                      ? std::size_t(std::uint64_t{1} << 39)
                                      : std::numeric_limits<std::size_t>::max() / 4;

constinit std::atomic<unsigned long> gLiveBlocks = 0;

BlockHeader* HeaderOf(void* block) noexcept {
    return block ? static_cast<BlockHeader*>(block) - 1 : nullptr;
}

bool MayAllocate(std::size_t size) noexcept {
    return !gAllocationPoint.Attempt() && size <= kMaxBlock;
}

void* Realloc(void* block, unsigned long size) {
    void* const raw =
        MayAllocate(size) ? std::realloc(HeaderOf(block), sizeof(BlockHeader) + size) : nullptr;
    if (raw && !block) {
        ++gLiveBlocks;
    }
    return raw ? new (raw) BlockHeader{size} + 1 : nullptr;
}

void* Alloc(unsigned long size) {
    return Realloc(nullptr, size);
}

void Free(void* block) {
    FreeBlock(HeaderOf(block));
}

unsigned long GetBlockSize(void* block) {
    return block ? HeaderOf(block)->fSize : 0;
}

} // namespace

void* AllocBlock(std::size_t size) noexcept {
    void* const block = MayAllocate(size) ? std::malloc(size) : nullptr;
    if (block) {
        ++gLiveBlocks;
    }
    return block;
}

void FreeBlock(void* block) noexcept {
    if (block) {
        --gLiveBlocks;
        std::free(block);
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
