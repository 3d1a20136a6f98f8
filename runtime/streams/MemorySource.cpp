// Sources in memory: one that grows, and one on a shared buffer.
#include <algorithm>
#include <cstring>

#include "runtime/objects/Errors.h"
#include "runtime/objects/Memory.h"
#include "runtime/objects/SharedBuffers.h"
#include "runtime/streams/StreamSource.h"

namespace bibrt {

namespace {

// Copies what of size bytes at offset there is in data; how many.
unsigned long CopyOut(
    unsigned char const* data,
    unsigned long length,
    unsigned long offset,
    unsigned char* buffer,
    unsigned long size) noexcept {
    unsigned long const count = offset < length ? std::min(size, length - offset) : 0;
    if (count != 0) {
        std::memcpy(buffer, data + offset, count);
    }
    return count;
}

// Bytes in one block that doubles when it is full.
class GrowingBytes {
public:
    GrowingBytes() = default;
    GrowingBytes(GrowingBytes const&) = delete;
    GrowingBytes& operator=(GrowingBytes const&) = delete;
    ~GrowingBytes() { FreeBlock(fBlock); }

    unsigned char const* Begin() const noexcept { return fBlock; }
    unsigned long Size() const noexcept { return fSize; }

    // Writes all of size bytes at offset, or throws std::bad_alloc and writes nothing. REQUIRES:
    // offset <= Size(), and the sum of offset and size is in range.
    void Write(unsigned long offset, unsigned char const* bytes, unsigned long size) {
        unsigned long const end = offset + size;
        if (end > fCapacity) {
            Grow(end);
        }
        if (size != 0) {
            std::memcpy(fBlock + offset, bytes, size);
        }
        fSize = std::max(fSize, end);
    }

private:
    static constexpr unsigned long kFirstCapacity = 256;

    void Grow(unsigned long wanted) {
        unsigned long const capacity = std::max({wanted, fCapacity * 2, kFirstCapacity});
        void* const block = ReallocBlock(fBlock, capacity);
        if (!block) {
            throw std::bad_alloc();
        }
        fBlock = static_cast<unsigned char*>(block);
        fCapacity = capacity;
    }

    unsigned char* fBlock = nullptr;
    unsigned long fSize = 0;
    unsigned long fCapacity = 0;
};

class MemorySource final : public StreamSource {
public:
    BIBError* ReadAt(
        unsigned long offset,
        unsigned char* buffer,
        unsigned long size,
        unsigned long& bytesRead) override {
        bytesRead = CopyOut(fBytes.Begin(), fBytes.Size(), offset, buffer, size);
        return nullptr;
    }

    BIBError*
    WriteAt(unsigned long offset, unsigned char const* buffer, unsigned long size) override {
        fBytes.Write(offset, buffer, size);
        return nullptr;
    }

    BIBError* GetLength(unsigned long& length) override {
        length = fBytes.Size();
        return nullptr;
    }

private:
    GrowingBytes fBytes;
};

class BufferSource final : public StreamSource {
public:
    explicit BufferSource(BIBSharedBuffer* buffer) noexcept : fBuffer(buffer) {
        AddBufferRef(fBuffer);
    }
    BufferSource(BufferSource const&) = delete;
    BufferSource& operator=(BufferSource const&) = delete;
    ~BufferSource() override { ReleaseBuffer(fBuffer); }

    BIBError* ReadAt(
        unsigned long offset,
        unsigned char* buffer,
        unsigned long size,
        unsigned long& bytesRead) override {
        auto const* const data = static_cast<unsigned char const*>(fBuffer->fData);
        bytesRead = CopyOut(data, fBuffer->fSize, offset, buffer, size);
        return nullptr;
    }

    BIBError* WriteAt(unsigned long, unsigned char const*, unsigned long) override {
        return Failure("a stream on a shared buffer cannot be written");
    }

    BIBError* GetLength(unsigned long& length) override {
        length = fBuffer->fSize;
        return nullptr;
    }

private:
    BIBSharedBuffer* fBuffer;
};

} // namespace

SourcePtr MakeMemorySource() {
    return std::allocate_shared<MemorySource>(CallerAllocator<MemorySource>());
}

SourcePtr MakeBufferSource(BIBSharedBuffer* buffer) {
    return std::allocate_shared<BufferSource>(CallerAllocator<BufferSource>(), buffer);
}

} // namespace bibrt
