#include "runtime/objects/BlockPool.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <utility>

#include "runtime/objects/Counting.h"

namespace bibrt {

namespace {

constexpr std::size_t kSlabSize = std::size_t{32} * 1024;
constexpr std::size_t kGrain = alignof(std::max_align_t);
constexpr std::size_t kSizes = kMaxPooled / kGrain;

// A block that nobody has.
struct FreeBlockLink {
    FreeBlockLink* fNext;
};

class Pool;

// Begins at a multiple of its size, so that a block tells its slab.
struct alignas(kGrain) Slab {
    Slab(Pool& pool, std::size_t blockSize) noexcept
        : fPool(pool),
          fBlockSize(blockSize),
          fUncut(reinterpret_cast<char*>(this + 1)) {}

    static Slab* Of(void* block) noexcept {
        auto* const byte = static_cast<char*>(block);
        return reinterpret_cast<Slab*>(byte - reinterpret_cast<std::uintptr_t>(block) % kSlabSize);
    }

    bool HasUncut() const noexcept {
        return fUncut + fBlockSize <= reinterpret_cast<char const*>(this) + kSlabSize;
    }
    bool HasRoom() const noexcept { return fFree != nullptr || HasUncut(); }

    // REQUIRES: HasRoom().
    void* Take() noexcept {
        ++fUsed;
        if (fFree != nullptr) {
            return std::exchange(fFree, fFree->fNext);
        }
        return std::exchange(fUncut, fUncut + fBlockSize);
    }

    // A slab without a block in use is uncut again: its blocks come in the order of their
    // addresses once more, and none has to be looked at for the one behind it.
    void Give(void* block) noexcept {
        if (--fUsed == 0) {
            fFree = nullptr;
            fUncut = reinterpret_cast<char*>(this + 1);
        } else {
            fFree = new (block) FreeBlockLink{fFree};
        }
    }

    Pool& fPool;
    std::size_t fBlockSize;
    char* fUncut; // what was never a block begins here
    FreeBlockLink* fFree = nullptr;
    std::size_t fUsed = 0;
    Slab* fNext = nullptr; // among the slabs with room
    Slab* fPrevious = nullptr;
};

// The slabs with room, for each size of block.
class Pool {
public:
    void* Alloc(std::size_t size) noexcept {
        std::size_t const index = (size - 1) / kGrain;
        ThreadGuard const guard(fLock);
        Slab* const slab = fSlabs[index] != nullptr ? fSlabs[index] : AddSlab(index);
        if (slab == nullptr) {
            return nullptr;
        }
        void* const block = slab->Take();
        if (!slab->HasRoom()) {
            Unlink(*slab, index);
        }
        return block;
    }

    void Free(Slab& slab, void* block) noexcept {
        std::size_t const index = slab.fBlockSize / kGrain - 1;
        ThreadGuard const guard(fLock);
        bool const wasFull = !slab.HasRoom();
        slab.Give(block);
        if (wasFull) {
            Link(slab, index);
        }
        // The last one with room stays for the next block.
        bool const isOnly = slab.fNext == nullptr && slab.fPrevious == nullptr;
        if (slab.fUsed == 0 && !isOnly) {
            Unlink(slab, index);
            std::free(&slab);
        }
    }

private:
    Slab* AddSlab(std::size_t index) noexcept {
        void* const memory = std::aligned_alloc(kSlabSize, kSlabSize);
        if (memory == nullptr) {
            return nullptr;
        }
        auto* const slab = new (memory) Slab(*this, (index + 1) * kGrain);
        Link(*slab, index);
        return slab;
    }

    void Link(Slab& slab, std::size_t index) noexcept {
        slab.fPrevious = nullptr;
        slab.fNext = std::exchange(fSlabs[index], &slab);
        if (slab.fNext != nullptr) {
            slab.fNext->fPrevious = &slab;
        }
    }

    void Unlink(Slab& slab, std::size_t index) noexcept {
        (slab.fPrevious != nullptr ? slab.fPrevious->fNext : fSlabs[index]) = slab.fNext;
        if (slab.fNext != nullptr) {
            slab.fNext->fPrevious = slab.fPrevious;
        }
        slab.fNext = nullptr;
        slab.fPrevious = nullptr;
    }

    std::mutex fLock;
    std::array<Slab*, kSizes> fSlabs{};
};

// More than threads that allocate at the same moment. Never destroyed, as blocks may be freed by
// whatever runs last in the process.
constinit std::array<Pool, 16> gPools;

// The first thread has the first pool, and threads take turns at them.
Pool& PoolOfThread() noexcept {
    if (HasOneThread()) {
        return gPools[0];
    }
    static constinit std::atomic<std::size_t> threads{0};
    thread_local std::size_t const kNumber = threads.fetch_add(1, std::memory_order_relaxed);
    return gPools[kNumber % gPools.size()];
}

} // namespace

void* AllocPooled(std::size_t size) noexcept {
    return PoolOfThread().Alloc(size);
}

void FreePooled(void* block) noexcept {
    Slab& slab = *Slab::Of(block);
    slab.fPool.Free(slab, block);
}

} // namespace bibrt
