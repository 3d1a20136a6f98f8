// The runtime's allocator for everything that it makes for callers. It counts blocks, and the
// objects of the classes that callers reference. Thread safe.
//
// The tables that the runtime keeps until the process ends use the standard allocator and call
// ExpectMemory instead, so that they do not appear in callers' counts.
#pragma once

#include <atomic>
#include <cstddef>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace bibrt {

// A block of size bytes, aligned for every type. Null if memory runs out, and for a size that no
// machine has.
void* AllocBlock(std::size_t size) noexcept;

// Frees a block. Null is ignored.
void FreeBlock(void* block) noexcept;

// The number of allocated blocks.
unsigned long CountLiveBlocks() noexcept;

// Counts as an allocation. Throws std::bad_alloc if a failure is injected.
void ExpectMemory();

// Lets standard containers use the allocator. Throws std::bad_alloc.
template <class T>
struct CallerAllocator {
    // NOLINTBEGIN(readability-identifier-naming, bugprone-sizeof-expression): the standard's names,
    // and any type, pointers among them.
    using value_type = T;

    CallerAllocator() noexcept = default;
    template <class U>
    CallerAllocator(CallerAllocator<U> const&) noexcept {}

    T* allocate(std::size_t count) {
        void* const block =
            count <= std::size_t(-1) / sizeof(T) ? AllocBlock(count * sizeof(T)) : nullptr;
        if (!block) {
            throw std::bad_alloc();
        }
        return static_cast<T*>(block);
    }
    void deallocate(T* block, std::size_t /*count*/) noexcept { FreeBlock(block); }
    // NOLINTEND(readability-identifier-naming, bugprone-sizeof-expression)

    friend bool operator==(CallerAllocator const&, CallerAllocator const&) noexcept { return true; }
};

template <class T>
using Vector = std::vector<T, CallerAllocator<T>>;
using String = std::basic_string<char, std::char_traits<char>, CallerAllocator<char>>;

struct FreeBlockDeleter {
    void operator()(void* block) const noexcept { FreeBlock(block); }
};

// A new object in its own block, followed by extra bytes. Throws std::bad_alloc, and what the
// constructor throws. REQUIRES: extra <= kMaxExtra.
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

// The maximum of extra bytes for NewObjectWith; more than any machine has.
inline constexpr std::size_t kMaxExtra = std::numeric_limits<std::size_t>::max() / 16;

// Destroys an object made by NewObject and frees its block. Null is ignored.
template <class T>
void DeleteObject(T* object) noexcept {
    if (object) {
        object->~T();
        FreeBlock(object);
    }
}

// The base of a class whose live objects are counted. Thread safe.
template <class T>
class Counted {
public:
    static unsigned long CountLive() noexcept { return fLive; }

    Counted() noexcept { ++fLive; }
    Counted(Counted const&) = delete;
    Counted& operator=(Counted const&) = delete;
    ~Counted() { --fLive; }

protected:
    // No longer counts an object, which the runtime owns from now on.
    static void LeaveOut() noexcept { --fLive; }

private:
    static inline std::atomic<unsigned long> fLive = 0;
};

} // namespace bibrt
