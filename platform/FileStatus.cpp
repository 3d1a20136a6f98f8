#include "platform/FileStatus.h"

#include <cerrno>
#include <fcntl.h>

#include "platform/SystemErrors.h"

namespace platform {

OSErr FileStatus::Read(std::string const& path) noexcept {
    constexpr unsigned kWanted = STATX_TYPE | STATX_MODE | STATX_MTIME;
    int result = statx(AT_FDCWD, path.c_str(), 0, kWanted, &fStatus);
    if (result < 0) {
        result = statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, kWanted, &fStatus);
    }
    return CodeOfResult(result);
}

int OpenPath(char const* path, int flags, mode_t mode) noexcept {
    int file = -1;
    do {
        file = open(path, flags | O_NOCTTY | O_CLOEXEC, mode);
    } while (file < 0 && errno == EINTR);
    return file;
}

} // namespace platform
