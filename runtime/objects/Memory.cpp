#include "runtime/objects/Memory.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "runtime/objects/BlockPool.h"

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

// Whether size bytes come out of the pool. There, tools that watch memory would not see what is
// done to a block: builds for them have no pool.
constexpr bool IsPooled([[maybe_unused]] std::size_t size) noexcept {
#ifdef BIBRT_BLOCK_POOL
    return size != 0 && size <= kMaxPooled;
#else
    return false;
#endif
}

void* NewRaw(std::size_t size) noexcept {
    return IsPooled(size) ? AllocPooled(size) : std::malloc(size);
}

void DeleteRaw(void* bytes, std::size_t size) noexcept {
    IsPooled(size) ? FreePooled(bytes) : std::free(bytes);
}

bool MayAlloc(std::size_t size) noexcept {
    return !gAllocationPoint.Attempt() && size <= kMaxBlock;
}

// A block with its header, or null.
void* NewBlock(std::size_t size) noexcept {
    std::size_t const whole = size + sizeof(BlockHeader);
    void* const raw = NewRaw(whole);
    return raw ? new (raw) BlockHeader{size} + 1 : nullptr;
}

void DeleteBlock(void* block) noexcept {
    BlockHeader* const header = HeaderOf(block);
    DeleteRaw(header, header->fSize + sizeof(BlockHeader));
}

void* MoveBlock(void* block, std::size_t size) noexcept {
    void* const moved = NewBlock(size);
    if (moved) {
        std::memcpy(moved, block, std::min(size, BlockSize(block)));
        DeleteBlock(block);
    }
    return moved;
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
    return may ? NewRaw(size) : nullptr;
}

void FreeResident(void* block, std::size_t size) noexcept {
    DeleteRaw(block, size);
}

void* ReallocBlock(void* block, std::size_t size) noexcept {
    if (!block) {
        return AllocBlock(size);
    }
    bool const may = MayAlloc(size);
    CountEnd();
    if (!may) {
        return nullptr;
    }
    bool const isLarge = !IsPooled(std::min(size, BlockSize(block)) + sizeof(BlockHeader));
    return isLarge ? ResizeBlock(block, size) : MoveBlock(block, size);
}

void FreeBlock(void* block) noexcept {
    if (!block) {
        return;
    }
    CountEnd();
    DeleteBlock(block);
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

} // namespace bibrt
