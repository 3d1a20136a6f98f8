// Changing and replacing files without ever losing one.
//
// What is promised, on which file systems and against whom, stands in docs/saving.md.
#pragma once

#include "pdfsettings/Error.h"
#include "pdfsettings/Export.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pdfsettings {

// Says that a file is not replaced, for the reason that what() gives. The file is as it was, unless
// what() names a file in which the bytes of another program are kept.
class PDFSETTINGS_API RefusedError : public Error {
public:
    using Error::Error;
};

// The file exists, and its owner has no write permission or the caller may not write it.
class PDFSETTINGS_API ReadOnlyError : public RefusedError {
public:
    using RefusedError::RefusedError;
};

// Somebody else changed the file since it was read.
class PDFSETTINGS_API ConflictError : public RefusedError {
public:
    using RefusedError::RefusedError;
};

// Another program kept the folder locked, the file open for writing, or a lease on it, until the
// time was over.
class PDFSETTINGS_API BusyError : public RefusedError {
public:
    using RefusedError::RefusedError;
};

// A link on the way to the file could have been planted by another user.
class PDFSETTINGS_API LinkError : public RefusedError {
public:
    using RefusedError::RefusedError;
};

struct SaveOptions {
    // How long to wait for other programs that hold the lock or have the file open for writing.
    std::chrono::milliseconds timeout = std::chrono::seconds(10);

    // Replace the file even if somebody else changed it since it was read.
    bool overwriteChanged = false;
};

// What a save could not do although it succeeded, a sentence each: a lock that could not be had, a
// permission that could not be kept, a file that an interrupted save left behind.
using SaveWarnings = std::vector<std::string>;

// Whether SaveSafely would throw ReadOnlyError for the file at path. False when there is none, or
// when it cannot be examined.
PDFSETTINGS_API bool IsReadOnly(std::string const& path);

// Whether path names the null device or a descriptor of this process (/dev/stdout, /dev/fd/3): that
// is read and written as it is, and never locked.
PDFSETTINGS_API bool IsStream(std::string const& path);

// The bytes of the file at path as a save would find it, or none where there is no file; none too
// for a stream. Of options only the timeout counts. Throws LinkError, BusyError, and Error with the
// system's reason, also for what is no regular file and for a file larger than 256 MiB.
PDFSETTINGS_API std::optional<std::string>
LookAt(std::string const& path, SaveOptions const& options = {});

// The bytes of the file at path, through all links; a stream is read to its end. Throws BusyError,
// and Error as LookAt and for a file that is not there.
PDFSETTINGS_API std::string ReadFile(std::string const& path);

// Makes bytes the contents of the file at path: whatever happens, the file holds the old bytes or
// the new ones, on disk too once this returns unless a warning says otherwise. A replaced file
// keeps its owner, mode, access control list, user attributes and security label; what cannot be
// kept is cut, never widened, and said in the warnings. A link is followed; other hard links keep
// the old bytes. Programs that use this library wait for each other. Throws RefusedError, and Error
// with the system's reason; then the file is as it was.
PDFSETTINGS_API SaveWarnings
SaveSafely(std::string const& path, std::string_view bytes, SaveOptions const& options = {});

// The same, if the file still is as it was seen by LookAt. Throws ConflictError when it is not.
PDFSETTINGS_API SaveWarnings SaveSafely(
    std::string const& path,
    std::string_view bytes,
    std::optional<std::string> const& seen,
    SaveOptions const& options = {});

// A file that is being changed, see Edit. Valid only while Edit runs.
class PDFSETTINGS_API EditedFile {
public:
    EditedFile(EditedFile const&) = delete;
    EditedFile& operator=(EditedFile const&) = delete;
    ~EditedFile();

    // The bytes as they were read, or were saved last; none where there is no file.
    std::optional<std::string> const& Bytes() const noexcept;

    // As SaveSafely, if the file still holds Bytes(): else throws ConflictError. May be called more
    // than once.
    SaveWarnings Save(std::string_view bytes);

private:
    struct State;

    friend PDFSETTINGS_API void
    Edit(std::string const&, std::function<void(EditedFile&)> const&, SaveOptions const&);

    explicit EditedFile(std::unique_ptr<State> state);

    std::unique_ptr<State> fState;
};

// Reads the file at path and calls change with it, which may save it. All of that happens under a
// lock on the file's folder, so that no other program with this library changes the file meanwhile
// and no change is lost. Saves and edits by the same thread in the same folder use the lock that is
// held; other threads wait. Do not wait for the user in change: others wait too, and give up after
// their time. Throws as LookAt and SaveSafely, and whatever change throws.
PDFSETTINGS_API void Edit(
    std::string const& path,
    std::function<void(EditedFile&)> const& change,
    SaveOptions const& options = {});

} // namespace pdfsettings
