// Reading, locking and replacing files safely.
//
// docs/saving.md states what is guaranteed, on which file systems and against whom. Settings use
// this themselves; use it directly for other files of a program.
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

// How long to wait for programs that hold the lock or have the file open for writing.
inline constexpr std::chrono::milliseconds kUsualWait{10000};

// What a successful save could not do, one sentence each: a lock that could not be taken, a
// permission that could not be kept, a file that an interrupted save left.
using SaveWarnings = Sequence<std::string>;

// Whether a save would throw Error (kReadOnly) for the file at path. False if there is no file, or
// if it cannot be examined.
PDFSETTINGS_API bool IsReadOnly(FilePath const& path);

// Whether path names the null device or a descriptor of this process (/dev/stdout, /dev/fd/3).
// These are read and written directly and never locked.
PDFSETTINGS_API bool IsStream(FilePath const& path);

// The bytes of the file at path as a save would find it; nothing if there is no file, and for a
// stream. Throws Error: kUntrusted, kBusy, and kSystem with the system's reason, also for a file
// that is not regular and for one larger than 256 MiB.
PDFSETTINGS_API std::optional<std::string>
LookAt(FilePath const& path, std::chrono::milliseconds wait = kUsualWait);

// The bytes of the file at path, following all links; a stream is read to its end. Throws Error:
// kBusy, and kSystem as LookAt and for a missing file.
PDFSETTINGS_API std::string ReadFile(FilePath const& path);

// Makes bytes the contents of the file at path. Whatever happens, the file has either the old bytes
// or the new ones. When this returns, the new bytes are on disk, unless a warning says otherwise. A
// replaced file keeps its owner, mode, access control list, user attributes and security label;
// what cannot be kept is restricted, never widened, and reported in a warning. Links are followed;
// other hard links keep the old bytes. Programs that use this library wait for each other. Throws
// Error: kReadOnly, kBusy, kUntrusted, kConflict if another program changes the file during the
// save, and kSystem with the system's reason. The file is then unchanged, unless the message names
// a file in which another program's bytes are kept.
PDFSETTINGS_API SaveWarnings SaveSafely(
    FilePath const& path, std::string_view bytes, std::chrono::milliseconds wait = kUsualWait);

// As above, if the file still is as LookAt returned it. Throws Error (kConflict) if it is not,
// unless onConflict is kOverwrite.
PDFSETTINGS_API SaveWarnings SaveSafely(
    FilePath const& path,
    std::string_view bytes,
    std::optional<std::string> const& seen,
    OnConflict onConflict = OnConflict::kRefuse,
    std::chrono::milliseconds wait = kUsualWait);

// The right to change a file, from reading it to saving it, so that no change is lost: while this
// exists, no other program with this library changes a file in the same folder. Saves by the same
// thread use this lock; other threads wait. Do not wait for the user meanwhile: other programs wait
// too, and fail when their time is over. A FileLock belongs to its thread.
class PDFSETTINGS_API FileLock {
public:
    // Locks the folder of the file at path and reads the file. A stream is neither locked nor read.
    // Throws as LookAt.
    explicit FileLock(FilePath const& path, std::chrono::milliseconds wait = kUsualWait);
    FileLock(FileLock const&) = delete;
    FileLock& operator=(FileLock const&) = delete;
    ~FileLock();

    FilePath const& File() const noexcept;

    // The bytes as last read or saved; nothing if there is no file.
    std::optional<std::string> const& Bytes() const noexcept;

    // As SaveSafely, with Bytes() as the expected contents. May be called more than once.
    SaveWarnings Save(std::string_view bytes, OnConflict onConflict = OnConflict::kRefuse);

private:
    struct PDFSETTINGS_LOCAL State;

    std::unique_ptr<State> fState;
};

} // namespace pdfsettings
