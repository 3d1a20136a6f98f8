#include "runtime/objects/Memory.h"

#include "api/BIBMemoryInterface.h"
#include "runtime/objects/Tables.h"

#include <cstdlib>

namespace bibrt {

namespace {

struct alignas(std::max_align_t) BlockHeader {
    std::size_t fSize;
};

// Sanitized allocators stop the program for sizes from twice this on instead of giving null.
constexpr std::size_t kMaxBlock = std::size_t(1) << 39;

// Attempts that left no live block behind, and live blocks that were freed. Together with the count
// of attempts this gives the live ones at the price of one addition for each.
constinit Counter gEnded;

constinit FailurePoint gAllocationPoint;

void CountEnd() noexcept {
    gEnded.Up();
}

BlockHeader* HeaderOf(void* block) noexcept {
    return static_cast<BlockHeader*>(block) - 1;
}

bool MayAlloc(std::size_t size) noexcept {
    return !gAllocationPoint.Attempt() && size <= kMaxBlock;
}

// A block with its header, or null.
void* NewBlock(std::size_t size) noexcept {
    std::size_t const whole = size + sizeof(BlockHeader);
    void* const raw = std::malloc(whole);
    return raw ? new (raw) BlockHeader{size} + 1 : nullptr;
}

void* ResizeBlock(void* block, std::size_t size) noexcept {
    void* const raw = std::realloc(HeaderOf(block), size + sizeof(BlockHeader));
    return raw ? new (raw) BlockHeader{size} + 1 : nullptr;
}

} // namespace

void* AllocBlock(std::size_t size) noexcept {
    void* const block = MayAlloc(size) ? NewBlock(size) : nullptr;
    if (!block) {
        CountEnd();
    }
    return block;
}

void* AllocResident(std::size_t size) noexcept {
    bool const may = MayAlloc(size);
    CountEnd();
    return may ? std::malloc(size) : nullptr;
}

void FreeResident(void* block) noexcept {
    std::free(block);
}

void* ReallocBlock(void* block, std::size_t size) noexcept {
    if (!block) {
        return AllocBlock(size);
    }
    bool const may = MayAlloc(size);
    CountEnd();
    return may ? ResizeBlock(block, size) : nullptr;
}

void FreeBlock(void* block) noexcept {
    if (!block) {
        return;
    }
    CountEnd();
    std::free(HeaderOf(block));
}

std::size_t BlockSize(void const* block) noexcept {
    return block ? (static_cast<BlockHeader const*>(block) - 1)->fSize : 0;
}

unsigned long CountLiveBlocks() noexcept {
    // The ends are read first: a block that ends in between then counts as live, never as less than
    // none.
    unsigned long const ended = gEnded.Get();
    unsigned long const attempts = gAllocationPoint.Count();
    return attempts > ended ? attempts - ended : 0;
}

FailurePoint& AllocationPoint() noexcept {
    return gAllocationPoint;
}

namespace {

void* Alloc(unsigned long size) {
    return AllocBlock(size);
}

void* Realloc(void* block, unsigned long size) {
    return ReallocBlock(block, size);
}

void Free(void* block) {
    FreeBlock(block);
}

unsigned long GetBlockSize(void* block) {
    return BlockSize(block);
}

} // namespace

BIBRT_DEFINE_TABLE(
    MemoryTable, "BIBMemoryInterface", _t_BIBMemoryInterface, BIB_MEMORY_INTERFACE_ROWS, 4)

} // namespace bibrt
