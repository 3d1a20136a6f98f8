#include "host/save/SeenFile.h"

#include <cerrno>
#include <csignal>
#include <system_error>
#include <unistd.h>

namespace pdfsettings::detail {

namespace {

// Asks whether the caller may write the file, with the rights of the effective user. 0, or errno.
int AskToWrite(Descriptor const& file, Descriptor const& folder, std::string const& name) {
    int result = faccessat(file.Number(), "", W_OK, AT_EACCESS | AT_EMPTY_PATH);
    // An older system does not know the flag for an open file, and a sandbox may refuse the call.
    if (result != 0 && (IsUnsupported(errno) || errno == EPERM)) {
        result = faccessat(folder.Number(), name.c_str(), W_OK, AT_EACCESS | AT_SYMLINK_NOFOLLOW);
    }
    return result == 0 ? 0 : errno;
}

} // namespace

std::optional<SeenFile>
SeenFile::Open(Descriptor const& folder, std::string const& name, Deadline deadline) {
    // What is no file is not opened at all: a device may start its work.
    struct stat status {};
    if (!Examine(folder, name, &status)) {
        if (errno != ENOENT) {
            ThrowSystemError(errno);
        }
        return std::nullopt;
    }
    RequireRegular(status);
    Descriptor file =
        OpenWithoutWaiting(deadline, [&] { return OpenIn(folder, name, kReadingAtOnce); });
    ThrowIfNegative(file.Number());
    RequireRegular(StatusOf(file));
    return SeenFile(std::move(file));
}

SeenFile::SeenFile(Descriptor file)
    : fFile(std::move(file)),
      fBytes(ReadAll(fFile)),
      fTraits(ReadTraits(fFile)),
      fStatus(StatusOf(fFile)),
      fCanHaveLease(!IsOnNetwork(fFile)) {}

void SeenFile::RequireWritable(Descriptor const& folder, std::string const& name) const {
    if ((fTraits.mode & S_IWUSR) == 0) {
        throw ReadOnlyError("read-only");
    }
    int const error = AskToWrite(fFile, folder, name);
    if (error == EACCES || error == EPERM || error == EROFS) {
        throw ReadOnlyError("read-only: " + std::generic_category().message(error));
    }
    if (error != 0) {
        ThrowSystemError(error);
    }
}

bool SeenFile::StandsAt(Descriptor const& folder, std::string const& name) const {
    struct stat status {};
    return Examine(folder, name, &status) && IsSameFile(status, fStatus) &&
           ReadTraits(fFile) == fTraits && ReadAll(fFile) == fBytes;
}

// The system gives a lease for reading only where nobody has the file open for writing. It is given
// up at once; should somebody open the file in that moment, the signal for it is one that a program
// without a handler ignores, unlike the usual SIGIO, which would end it.
bool SeenFile::HasWriter() const {
    if (!fCanHaveLease) {
        return false;
    }
    fcntl(fFile.Number(), F_SETSIG, SIGURG);
    if (fcntl(fFile.Number(), F_SETLEASE, F_RDLCK) == 0) {
        fcntl(fFile.Number(), F_SETLEASE, F_UNLCK);
        return false;
    }
    return errno == EAGAIN;
}

} // namespace pdfsettings::detail
