// Sources in memory: one that grows, and one on a shared buffer.
#include "runtime/objects/Errors.h"
#include "runtime/objects/Memory.h"
#include "runtime/objects/SharedBuffers.h"
#include "runtime/streams/StreamSource.h"

#include <algorithm>
#include <cstring>

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

class MemorySource final : public StreamSource {
public:
    BIBError* ReadAt(
        unsigned long offset,
        unsigned char* buffer,
        unsigned long size,
        unsigned long& bytesRead) override {
        bytesRead = CopyOut(fBytes.data(), fBytes.size(), offset, buffer, size);
        return nullptr;
    }

    BIBError*
    WriteAt(unsigned long offset, unsigned char const* buffer, unsigned long size) override {
        // What goes behind the end first, for which there may be no memory.
        unsigned long const inside = std::min(size, fBytes.size() - offset);
        fBytes.insert(fBytes.end(), buffer + inside, buffer + size);
        std::copy_n(buffer, inside, fBytes.data() + offset);
        return nullptr;
    }

    BIBError* GetLength(unsigned long& length) override {
        length = fBytes.size();
        return nullptr;
    }

private:
    Vector<unsigned char> fBytes;
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
