// The runtime's memory, and buffers that are freed at the end of their scope.
#pragma once

#include "api/BIBMemoryInterface.h"
#include "bib/BIBError.h"
#include "bib/BIBInterfaceClient.h"

#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

namespace BIB_T_NMT {

BIB_DECLARE_INTERFACE(BIBMemoryInterface, BIBMemoryTraits, BIB_MEMORY_INTERFACE_ROWS, 4);

// Blocks from the runtime. All members are static.
class CBIBMemory {
public:
    // Binds the table. Returns true, or throws the CBIBError "Missing Interface".
    static bool Init();

    // A block of size bytes, never null. Throws the memory error.
    static void* Alloc(unsigned long size);

    // Frees a block.
    static void Free(void* block) { GetProcs<BIBMemoryInterface>()->Free(block); }

    // Throws a copy of the runtime's memory error, which needs no allocation.
    [[noreturn]] static void ThrowMemError();
};

// Owns a block of count elements from Memory::Alloc, or none. Elements are not constructed, and
// their initial contents are undefined. Use it on one thread at a time.
template <class T, class Memory>
class TBIBMemoryBuffer {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    // Allocates count elements; no block for 0. Throws the memory error.
    explicit TBIBMemoryBuffer(unsigned long count)
        : fBuffer(Allocate(count)),
          fNumElements(count) {}

    // Copies count elements from source, which is not read if count is 0. Throws the memory error.
    TBIBMemoryBuffer(T const* source, unsigned long count) : TBIBMemoryBuffer(count) {
        CopyFrom(source);
    }

    TBIBMemoryBuffer(TBIBMemoryBuffer const& other)
        : fBuffer(other.fBuffer != nullptr ? Allocate(other.fNumElements) : nullptr),
          fNumElements(other.fNumElements) {
        CopyFrom(other.fBuffer);
    }

    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): it goes through a copy
    TBIBMemoryBuffer& operator=(TBIBMemoryBuffer const& other) {
        TBIBMemoryBuffer copy(other);
        std::swap(fBuffer, copy.fBuffer);
        fNumElements = copy.fNumElements;
        return *this;
    }

    ~TBIBMemoryBuffer() {
        if (fBuffer != nullptr) {
            Memory::Free(fBuffer);
        }
    }

    // The block; null if there is none.
    T* GetBuffer() noexcept { return fBuffer; }
    T const* GetBuffer() const noexcept { return fBuffer; }

    // The size in bytes.
    unsigned long GetSize() const noexcept { return fNumElements * sizeof(T); }

    // REQUIRES: index is less than the number of elements.
    T& operator[](unsigned long index) noexcept { return fBuffer[index]; }

    // Transfers the block to the caller, who frees it with Memory::Free, and leaves the buffer
    // empty.
    T* TakeBuffer() noexcept {
        fNumElements = 0;
        return std::exchange(fBuffer, nullptr);
    }

private:
    static T* Allocate(unsigned long count) {
        if (count == 0) {
            return nullptr;
        }
        if (count > std::numeric_limits<unsigned long>::max() / sizeof(T)) {
            Memory::ThrowMemError();
        }
        return static_cast<T*>(Memory::Alloc(count * sizeof(T)));
    }

    void CopyFrom(T const* source) noexcept {
        if (fBuffer != nullptr && GetSize() != 0) {
            std::memcpy(fBuffer, source, GetSize());
        }
    }

    T* fBuffer;
    unsigned long fNumElements;
};

} // namespace BIB_T_NMT
