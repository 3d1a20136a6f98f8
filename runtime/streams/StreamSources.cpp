// Stream sources: growing memory, a shared buffer, a file.
#include "runtime/objects/Errors.h"
#include "runtime/objects/SharedBuffers.h"
#include "runtime/streams/Streams.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace bibrt {

namespace {

// Copies the bytes at offset from data, size at most. Returns their number.
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
        auto const* const data = reinterpret_cast<unsigned char const*>(fBytes.data());
        bytesRead = CopyOut(data, fBytes.size(), offset, buffer, size);
        return nullptr;
    }

    BIBError*
    WriteAt(unsigned long offset, unsigned char const* buffer, unsigned long size) override {
        // Bytes past the end come first: memory may run out for them, and then nothing has changed.
        unsigned long const inside = std::min(size, fBytes.size() - offset);
        fBytes.append(reinterpret_cast<char const*>(buffer + inside), size - inside);
        std::copy_n(buffer, inside, fBytes.data() + offset);
        return nullptr;
    }

    BIBError* GetLength(unsigned long& length) override {
        length = fBytes.size();
        return nullptr;
    }

private:
    String fBytes;
};

class BufferSource final : public StreamSource {
public:
    explicit BufferSource(BufferRef buffer) noexcept : fBuffer(std::move(buffer)) {}

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
    BufferRef fBuffer;
};

constexpr mode_t kNewFileMode = 0666;

// "PATH: what could not be done: why", for an errno value.
BIBError* FileFailure(char const* path, char const* action, int code) {
    String text(path);
    text.append(": ").append(action).append(": ");
    text.append(std::generic_category().message(code).c_str());
    return Failure(text.c_str());
}

int OpenFlags(bool isWritable) noexcept {
    return O_CLOEXEC | (isWritable ? O_RDWR | O_CREAT : O_RDONLY);
}

// The errno value why an open file cannot be a positionable stream; 0 if it can.
int ErrorOfFile(int descriptor) noexcept {
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0) {
        return errno;
    }
    if (S_ISDIR(status.st_mode)) {
        return EISDIR;
    }
    return ::lseek(descriptor, 0, SEEK_CUR) < 0 ? errno : 0;
}

// Calls transfer(done) until size bytes are transferred, it returns 0, or it fails. Returns the
// number of bytes transferred. errno has the failure, or 0 if there was none.
template <class Transfer>
unsigned long TransferAll(unsigned long size, Transfer transfer) {
    unsigned long done = 0;
    errno = 0;
    while (done < size) {
        ssize_t const count = transfer(done);
        if (count < 0 && errno == EINTR) {
            errno = 0;
            continue;
        }
        if (count <= 0) {
            break;
        }
        done += static_cast<unsigned long>(count);
    }
    return done;
}

class FileSource final : public StreamSource {
public:
    // Opens the file. ErrorNumber has the result.
    FileSource(char const* path, bool isWritable)
        : fPath(path),
          fIsWritable(isWritable),
          fDescriptor(::open(path, OpenFlags(isWritable), kNewFileMode)),
          fErrorNumber(fDescriptor == kNone ? errno : ErrorOfFile(fDescriptor)) {}
    FileSource(FileSource const&) = delete;
    FileSource& operator=(FileSource const&) = delete;
    ~FileSource() override {
        if (fDescriptor != kNone) {
            ::close(fDescriptor);
        }
    }

    // The errno value why it cannot be a stream; 0 if it can.
    int ErrorNumber() const noexcept { return fErrorNumber; }

    BIBError* ReadAt(
        unsigned long offset,
        unsigned char* buffer,
        unsigned long size,
        unsigned long& bytesRead) override {
        bytesRead = TransferAll(size, [&](unsigned long done) {
            return ::pread(
                fDescriptor, buffer + done, size - done, static_cast<off_t>(offset + done));
        });
        return errno == 0 ? nullptr : FileFailure(fPath.c_str(), "cannot read", errno);
    }

    BIBError*
    WriteAt(unsigned long offset, unsigned char const* buffer, unsigned long size) override {
        if (!fIsWritable) {
            return FileFailure(fPath.c_str(), "cannot write", EBADF);
        }
        if (size > kMaxOffset - offset) {
            return FileFailure(fPath.c_str(), "cannot write", EFBIG);
        }
        unsigned long const done = TransferAll(size, [&](unsigned long sofar) {
            return ::pwrite(
                fDescriptor, buffer + sofar, size - sofar, static_cast<off_t>(offset + sofar));
        });
        return done == size ? nullptr
                            : FileFailure(fPath.c_str(), "cannot write", errno == 0 ? EIO : errno);
    }

    BIBError* GetLength(unsigned long& length) override {
        struct stat status = {};
        if (::fstat(fDescriptor, &status) != 0) {
            return FileFailure(fPath.c_str(), "cannot measure", errno);
        }
        if (std::cmp_greater(status.st_size, kMaxOffset)) {
            return FileFailure(fPath.c_str(), "cannot measure", EOVERFLOW);
        }
        length = static_cast<unsigned long>(status.st_size);
        return nullptr;
    }

private:
    static constexpr auto kMaxOffset = static_cast<unsigned long>(std::min<std::uintmax_t>(
        std::numeric_limits<off_t>::max(), std::numeric_limits<unsigned long>::max()));

    static constexpr int kNone = -1;

    String fPath; // for error messages
    bool fIsWritable;
    int fDescriptor;
    int fErrorNumber;
};

} // namespace

SourcePtr MakeMemorySource() {
    return std::allocate_shared<MemorySource>(CallerAllocator<MemorySource>());
}

SourcePtr MakeBufferSource(BIBSharedBuffer* buffer) {
    AddBufferRef(buffer);
    return std::allocate_shared<BufferSource>(CallerAllocator<BufferSource>(), BufferRef(buffer));
}

BIBError* OpenFileSource(SourcePtr& result, char const* path, bool writable) {
    auto const source =
        std::allocate_shared<FileSource>(CallerAllocator<FileSource>(), path, writable);
    if (source->ErrorNumber() != 0) {
        return FileFailure(path, "cannot open", source->ErrorNumber());
    }
    result = source;
    return nullptr;
}

} // namespace bibrt
