// The contents of files.
#include "platform/FileManager.h"
#include "platform/FileSizeSignal.h"
#include "platform/FileSystem.h"
#include "platform/NewFiles.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using platform::CodeOf;
using platform::CodeOfResult;
using platform::FileStatus;
using platform::OpenPath;

namespace {

// The system transfers at most this many bytes in one call.
constexpr ByteCount kLargestTransfer = 0x7FFFF000;

bool IsRegular(int file) noexcept {
    struct stat status {};
    return fstat(file, &status) == 0 && S_ISREG(status.st_mode);
}

// Checked before opening: opening a device may have side effects.
OSErr CheckIsFile(FSRef const& ref) noexcept {
    if (ref.isFile) {
        return noErr;
    }
    FileStatus status;
    OSErr const error = status.Read(ref.path);
    return error == noErr && !status.IsFileOrLink() ? OSErr{ioErr} : error;
}

// Opens without blocking: a pipe that has replaced the file would block until its other end is
// opened. While another process holds a lease, the open fails with EWOULDBLOCK and is repeated, for
// longer than the system lets a process keep the lease by default.
int OpenRegular(char const* path, int access) noexcept {
    constexpr int kMostAttempts = 6000;
    constexpr timespec kPause{0, 10'000'000};
    int file = OpenPath(AT_FDCWD, path, access | O_NONBLOCK);
    for (int i = 0; file < 0 && errno == EWOULDBLOCK && i < kMostAttempts; ++i) {
        nanosleep(&kPause, nullptr);
        file = OpenPath(AT_FDCWD, path, access | O_NONBLOCK);
    }
    return file;
}

// Moves count bytes with transfer, which returns the number of bytes moved, 0 at the end, or a
// negative number on failure.
template <class Transfer>
OSErr TransferAll(ByteCount count, ByteCount* actualCount, Transfer transfer) noexcept {
    ByteCount done = 0;
    OSErr error = noErr;
    while (done < count && error == noErr) {
        ssize_t const moved = transfer(done, std::min(count - done, kLargestTransfer));
        if (moved > 0) {
            done += static_cast<ByteCount>(moved);
        } else if (moved == 0 || errno != EINTR) {
            error = moved == 0 ? ioErr : CodeOf(errno);
        }
    }
    if (actualCount != nullptr) {
        *actualCount = done;
    }
    return error;
}

} // namespace

OSErr FSGetDataForkName(HFSUniStr255* dataForkName) noexcept {
    dataForkName->length = 0;
    return noErr;
}

OSErr FSOpenFork(
    FSRef const* ref,
    UniCharCount forkNameLength,
    UniChar const* /*forkName*/,
    SInt16 permissions,
    FSIORefNum* forkRefNum) noexcept {
    if (forkNameLength != 0 || (permissions != fsRdPerm && permissions != fsRdWrPerm)) {
        return paramErr;
    }
    if (OSErr const error = CheckIsFile(*ref); error != noErr) {
        return error;
    }
    int const file =
        ref->created != nullptr
            ? ref->created->Duplicate()
            : OpenRegular(ref->path.c_str(), permissions == fsRdPerm ? O_RDONLY : O_RDWR);
    if (file < 0) {
        return CodeOf(errno);
    }
    if (!IsRegular(file)) {
        close(file);
        return ioErr;
    }
    *forkRefNum = file;
    return noErr;
}

OSErr FSCloseFork(FSIORefNum forkRefNum) noexcept {
    return CodeOfResult(close(forkRefNum));
}

OSErr FSGetForkSize(FSIORefNum forkRefNum, SInt64* forkSize) noexcept {
    struct stat status {};
    OSErr const error = CodeOfResult(fstat(forkRefNum, &status));
    if (error == noErr) {
        *forkSize = status.st_size;
    }
    return error;
}

OSErr FSSetForkPosition(FSIORefNum forkRefNum, UInt16 positionMode, SInt64 offset) noexcept {
    if (positionMode != fsFromStart && positionMode != fsFromLEOF) {
        return paramErr;
    }
    int const origin = positionMode == fsFromStart ? SEEK_SET : SEEK_END;
    return CodeOfResult(lseek(forkRefNum, offset, origin) < 0 ? -1 : 0);
}

OSErr FSReadFork(
    FSIORefNum forkRefNum,
    UInt16 positionMode,
    SInt64 offset,
    ByteCount count,
    void* buffer,
    ByteCount* actualCount) noexcept {
    if (OSErr const error = FSSetForkPosition(forkRefNum, positionMode, offset); error != noErr) {
        return error;
    }
    return TransferAll(count, actualCount, [=](ByteCount done, ByteCount size) {
        return read(forkRefNum, static_cast<char*>(buffer) + done, size);
    });
}

OSErr FSWriteFork(
    FSIORefNum forkRefNum,
    UInt16 positionMode,
    SInt64 offset,
    ByteCount count,
    void const* buffer,
    ByteCount* actualCount) noexcept {
    if (OSErr const error = FSSetForkPosition(forkRefNum, positionMode, offset); error != noErr) {
        return error;
    }
    platform::FileSizeSignalGuard const guard;
    return TransferAll(count, actualCount, [=](ByteCount done, ByteCount size) {
        return write(forkRefNum, static_cast<char const*>(buffer) + done, size);
    });
}
