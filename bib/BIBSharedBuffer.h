// Shared buffers: reference-counted blocks of the runtime.
#pragma once

#include "api/BIBSharedBuffInterface.h"
#include "bib/BIBClient.h"
#include "bib/BIBInterfaceClient.h"
#include "bib/BIBMemory.h"

#include <limits>

namespace BIB_T_NMT {

BIB_DECLARE_INTERFACE(
    BIBSharedBuffInterface, BIBSharedBuffTraits, BIB_SHARED_BUFF_INTERFACE_ROWS, 6);

// Creates shared buffers. All members are static.
class CBIBSharedBuff {
public:
    // Binds the table. Throws the CBIBError "Missing Interface" if that fails.
    static void Init();

    // A buffer of size bytes with one reference for the caller; it uses block if that is not null.
    // Throws the memory error; block has then been freed through deleteProc, if there is one.
    static BIBSharedBuffer* NewBuffer(
        unsigned long size,
        void* block,
        void (*deleteProc)(void*),
        BIBSharedBuffPurgeProc purgeProc,
        void* clientData);
};

// Frees a block of CBIBMemory: the deleter for a block that a memory buffer has transferred.
void BIBDeleteSharedBuff(void* block);

// Owns one reference to a shared buffer of elements, or none: an empty handle. A handle never
// writes to the data, so several threads may use copies of one handle.
template <class T>
class TBIBSharedBuffer : public CBIBClientBase {
public:
    // An empty handle.
    TBIBSharedBuffer() noexcept = default;

    // A handle to buffer; an empty handle for null. With adopt, the handle takes ownership of the
    // caller's reference; without, it adds one. Throws CBIBError if the interface is missing.
    TBIBSharedBuffer(BIBSharedBuffer* buffer, bool adopt) : fSharedBuffer(buffer) {
        if (buffer == nullptr) {
            return;
        }
        CBIBSharedBuff::Init();
        if (!adopt) {
            Procs()->AddRef(buffer);
        }
        fBuffer = static_cast<T*>(Procs()->GetBuffer(buffer));
        fSize = Procs()->GetSize(buffer);
    }

    // A new buffer of count elements, not initialized. Throws the memory error.
    TBIBSharedBuffer(unsigned long count, BIBSharedBuffPurgeProc purgeProc) : fSize(SizeOf(count)) {
        fSharedBuffer = CBIBSharedBuff::NewBuffer(fSize, nullptr, nullptr, purgeProc, nullptr);
        fBuffer = static_cast<T*>(Procs()->GetBuffer(fSharedBuffer));
    }

    // A new buffer that takes ownership of the block of source. source is empty afterwards, also if
    // this throws the memory error. deleteProc frees the block in the end.
    TBIBSharedBuffer(TBIBMemoryBuffer<T, CBIBMemory>& source, void (*deleteProc)(void*))
        : fSize(source.GetSize()) {
        fSharedBuffer =
            CBIBSharedBuff::NewBuffer(fSize, source.TakeBuffer(), deleteProc, nullptr, nullptr);
        fBuffer = static_cast<T*>(Procs()->GetBuffer(fSharedBuffer));
    }

    TBIBSharedBuffer(TBIBSharedBuffer const& other)
        : CBIBClientBase(),
          fSharedBuffer(other.fSharedBuffer) {
        if (fSharedBuffer != nullptr) {
            Procs()->AddRef(fSharedBuffer);
            fBuffer = other.fBuffer;
            fSize = other.fSize;
        }
    }

    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): the order below bears it
    TBIBSharedBuffer& operator=(TBIBSharedBuffer const& other) {
        // Adds the new reference before it releases the old one: both may be to one buffer.
        if (other.fSharedBuffer != nullptr) {
            Procs()->AddRef(other.fSharedBuffer);
        }
        if (fSharedBuffer != nullptr) {
            Procs()->Release(fSharedBuffer);
        }
        fSharedBuffer = other.fSharedBuffer;
        fBuffer = other.fBuffer;
        fSize = other.fSize;
        return *this;
    }

    ~TBIBSharedBuffer() {
        // A handle in static storage may be destroyed although the table was never bound.
        if (fSharedBuffer != nullptr && Procs()->Release != nullptr) {
            Procs()->Release(fSharedBuffer);
        }
    }

    // The buffer, with a reference for the caller; null for an empty handle.
    BIBSharedBuffer* GetSharedBuffer() const {
        if (fSharedBuffer != nullptr) {
            Procs()->AddRef(fSharedBuffer);
        }
        return fSharedBuffer;
    }

    // The buffer, borrowed.
    BIBSharedBuffer* PeekSharedBuffer() const noexcept { return fSharedBuffer; }

    // The data; null for an empty handle.
    T* GetBuffer() const noexcept { return fBuffer; }

    // The size in bytes, and the number of whole elements.
    unsigned long GetSize() const noexcept { return fSize; }
    unsigned long GetNumElements() const noexcept { return fSize / sizeof(T); }

    // REQUIRES: index is less than GetNumElements().
    T& operator[](unsigned long index) const noexcept { return fBuffer[index]; }

    bool IsValid() const noexcept { return fSharedBuffer != nullptr; }

private:
    static _t_BIBSharedBuffInterface const* Procs() noexcept {
        return GetProcs<BIBSharedBuffInterface>();
    }

    static unsigned long SizeOf(unsigned long count) {
        if (count > std::numeric_limits<unsigned long>::max() / sizeof(T)) {
            CBIBMemory::ThrowMemError();
        }
        return count * sizeof(T);
    }

    BIBSharedBuffer* fSharedBuffer = nullptr;
    T* fBuffer = nullptr;
    unsigned long fSize = 0; // in bytes
};

} // namespace BIB_T_NMT
