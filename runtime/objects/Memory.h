// The one allocator of the runtime: everything that it makes for callers and for its own tables.
// Blocks of callers carry their size in front and count as live. Resident blocks, which hold what
// the runtime keeps until the process ends, do neither. Thread safe.
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "runtime/objects/FailurePoint.h"

namespace bibrt {

// A block of size bytes, aligned for every type; null when memory runs out and for a size that no
// machine has.
void* AllocBlock(std::size_t size) noexcept;

// Moves block (null: a new one) to one of size bytes and keeps the contents that fit. Null when
// memory runs out, and then block is untouched.
void* ReallocBlock(void* block, std::size_t size) noexcept;

// Frees a block. Accepts null.
void FreeBlock(void* block) noexcept;

// The size that was asked for; 0 for null.
std::size_t BlockSize(void const* block) noexcept;

// The same for resident blocks, each known by its first byte: so leak checkers see that they are
// held.
void* AllocResident(std::size_t size) noexcept;
void FreeResident(void* block) noexcept;

// The blocks that count as live.
unsigned long CountLiveBlocks() noexcept;

// Where allocations are counted and made to fail.
FailurePoint& AllocationPoint() noexcept;

// Whose a block is.
enum class BlockUse { kCaller, kResident };

// Gives standard containers the allocator. Throws std::bad_alloc.
template <class T, BlockUse kUse>
class TrackedAllocator {
public:
    using value_type = T;
    template <class U>
    struct rebind {
        using other = TrackedAllocator<U, kUse>;
    };

    TrackedAllocator() noexcept = default;
    template <class U>
    TrackedAllocator(TrackedAllocator<U, kUse> const&) noexcept {}

    // NOLINTBEGIN(readability-identifier-naming, bugprone-sizeof-expression): the standard's names,
    // and any type, pointers among them.
    T* allocate(std::size_t count) {
        void* const block =
            count <= std::size_t(-1) / sizeof(T) ? Alloc(count * sizeof(T)) : nullptr;
        if (!block) {
            throw std::bad_alloc();
        }
        return static_cast<T*>(block);
    }
    void deallocate(T* block, std::size_t /*count*/) noexcept {
        kUse == BlockUse::kCaller ? FreeBlock(block) : FreeResident(block);
    }
    // NOLINTEND(readability-identifier-naming, bugprone-sizeof-expression)

    friend bool operator==(TrackedAllocator const&, TrackedAllocator const&) noexcept {
        return true;
    }

private:
    static void* Alloc(std::size_t size) noexcept {
        return kUse == BlockUse::kCaller ? AllocBlock(size) : AllocResident(size);
    }
};

template <class T>
using CallerAllocator = TrackedAllocator<T, BlockUse::kCaller>;
template <class T>
using ResidentAllocator = TrackedAllocator<T, BlockUse::kResident>;

// What belongs to a caller's object.
template <class T>
using Vector = std::vector<T, CallerAllocator<T>>;
using String = std::basic_string<char, std::char_traits<char>, CallerAllocator<char>>;

// What belongs to the runtime's own tables.
template <class T>
using ResidentVector = std::vector<T, ResidentAllocator<T>>;
using ResidentString = std::basic_string<char, std::char_traits<char>, ResidentAllocator<char>>;

struct FreeBlockDeleter {
    void operator()(void* block) const noexcept { FreeBlock(block); }
};

// An object in a block of its own with extra bytes behind it. Throws std::bad_alloc, and whatever
// the constructor throws. REQUIRES: extra far below the range of its type, see kMaxExtra.
template <class T, class... Args>
T* NewObjectWith(std::size_t extra, Args&&... args) {
    std::unique_ptr<void, FreeBlockDeleter> block(AllocBlock(sizeof(T) + extra));
    if (!block) {
        throw std::bad_alloc();
    }
    T* const object = new (block.get()) T(std::forward<Args>(args)...);
    static_cast<void>(block.release());
    return object;
}

template <class T, class... Args>
T* NewObject(Args&&... args) {
    return NewObjectWith<T>(0, std::forward<Args>(args)...);
}

// The most extra bytes that NewObjectWith may be asked for; more than any machine can give.
inline constexpr std::size_t kMaxExtra = std::size_t(1) << 60;

// Destroys an object of NewObject and frees its block. Accepts null.
template <class T>
void DeleteObject(T* object) noexcept {
    if (object) {
        object->~T();
        FreeBlock(object);
    }
}

} // namespace bibrt
