#include "runtime/Memory.h"

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
constinit std::atomic<unsigned long> gEnded{0};

constinit FailurePoint gAllocationPoint;

void CountEnd() noexcept {
    gEnded.fetch_add(1, std::memory_order_relaxed);
}

BlockHeader* HeaderOf(void* block) noexcept {
    return static_cast<BlockHeader*>(block) - 1;
}

// The grown or new raw block behind old (may be null), or null.
void* RawRealloc(void* old, std::size_t size) noexcept {
    if (gAllocationPoint.Attempt() || size > kMaxBlock) {
        return nullptr;
    }
    return std::realloc(old, size + sizeof(BlockHeader));
}

} // namespace

void* AllocBlock(std::size_t size) noexcept {
    void* const raw = RawRealloc(nullptr, size);
    if (!raw) {
        CountEnd();
        return nullptr;
    }
    return new (raw) BlockHeader{size} + 1;
}

void* AllocResident(std::size_t size) noexcept {
    void* const block = RawRealloc(nullptr, size);
    CountEnd();
    return block;
}

void FreeResident(void* block) noexcept {
    std::free(block);
}

void* ReallocBlock(void* block, std::size_t size) noexcept {
    if (!block) {
        return AllocBlock(size);
    }
    void* const raw = RawRealloc(HeaderOf(block), size);
    CountEnd();
    if (!raw) {
        return nullptr;
    }
    auto* const header = static_cast<BlockHeader*>(raw);
    header->fSize = size;
    return header + 1;
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
    unsigned long const ended = gEnded.load(std::memory_order_relaxed);
    unsigned long const attempts = gAllocationPoint.Count();
    return attempts > ended ? attempts - ended : 0;
}

FailurePoint& AllocationPoint() noexcept {
    return gAllocationPoint;
}

} // namespace bibrt
