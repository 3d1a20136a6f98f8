// Reading, locking and replacing files without ever losing one.
//
// What is promised, on which file systems and against whom, stands in docs/saving.md. Settings use
// all of this by themselves; it is here for what else a program writes beside them.
#pragma once

#include "pdfsettings/Error.h"
#include "pdfsettings/Export.h"
#include "pdfsettings/Sequence.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace pdfsettings {

using FilePath = std::filesystem::path;

// What to do with a file that has changed since it was read.
enum class OnConflict { kRefuse, kOverwrite };

// How long to wait for other programs that hold the lock or have the file open for writing.
inline constexpr std::chrono::milliseconds kUsualWait{10000};

// What a save could not do although it succeeded, a sentence each: a lock that could not be had, a
// permission that could not be kept, a file that an interrupted save left behind.
using SaveWarnings = Sequence<std::string>;

// Whether a save would throw Error (kReadOnly) for the file at path. False when there is none, or
// when it cannot be examined.
PDFSETTINGS_API bool IsReadOnly(FilePath const& path);

// Whether path names the null device or a descriptor of this process (/dev/stdout, /dev/fd/3): that
// is read and written as it is, and never locked.
PDFSETTINGS_API bool IsStream(FilePath const& path);

// The bytes of the file at path as a save would find it, or none where there is no file; none too
// for a stream. Throws Error: kUntrusted, kBusy, and kSystem with the system's reason, also for
// what is no regular file and for a file larger than 256 MiB.
PDFSETTINGS_API std::optional<std::string>
LookAt(FilePath const& path, std::chrono::milliseconds wait = kUsualWait);

// The bytes of the file at path, through all links; a stream is read to its end. Throws Error:
// kBusy, and kSystem as LookAt and for a file that is not there.
PDFSETTINGS_API std::string ReadFile(FilePath const& path);

// Makes bytes the contents of the file at path: whatever happens, the file holds the old bytes or
// the new ones, on disk too once this returns unless a warning says otherwise. A replaced file
// keeps its owner, mode, access control list, user attributes and security label; what cannot be
// kept is cut, never widened, and said in the warnings. A link is followed; other hard links keep
// the old bytes. Programs that use this library wait for each other. Throws Error: kReadOnly,
// kBusy, kUntrusted, kConflict where another program changes it during the save, and kSystem with
// the system's reason; then the file is as it was, unless the message names a file in which the
// bytes of another program are kept.
PDFSETTINGS_API SaveWarnings SaveSafely(
    FilePath const& path, std::string_view bytes, std::chrono::milliseconds wait = kUsualWait);

// The same, if the file still is as it was seen by LookAt. Throws Error (kConflict) when it is not,
// unless it is to be overwritten.
PDFSETTINGS_API SaveWarnings SaveSafely(
    FilePath const& path,
    std::string_view bytes,
    std::optional<std::string> const& seen,
    OnConflict onConflict = OnConflict::kRefuse,
    std::chrono::milliseconds wait = kUsualWait);

// The right to change a file, from reading it to saving it: as long as this lives, no other program
// with this library changes a file in the same folder, so that no change is lost. Saves by the same
// thread use the lock that is held; other threads wait. Do not wait for the user meanwhile: others
// wait too, and give up after their time. It belongs to its thread.
class PDFSETTINGS_API FileLock {
public:
    // Locks the folder of the file at path and reads the file. A stream is neither locked nor read.
    // Throws as LookAt.
    explicit FileLock(FilePath const& path, std::chrono::milliseconds wait = kUsualWait);
    FileLock(FileLock const&) = delete;
    FileLock& operator=(FileLock const&) = delete;
    ~FileLock();

    FilePath const& File() const noexcept;

    // The bytes as they were read, or were saved last; none where there is no file.
    std::optional<std::string> const& Bytes() const noexcept;

    // As SaveSafely, if the file still holds Bytes(). May be called more than once.
    SaveWarnings Save(std::string_view bytes, OnConflict onConflict = OnConflict::kRefuse);

private:
    struct State;

    std::unique_ptr<State> fState;
};

} // namespace pdfsettings
