#include "platform/SystemErrors.h"

#include <cerrno>

namespace platform {

OSErr CodeOf(int error) noexcept {
    switch (error) {
    case 0:
        return noErr;
    case ENOENT:
    case ELOOP:
    case ESTALE:
        return fnfErr;
    case ENOTDIR:
        return dirNFErr;
    case EEXIST:
        return dupFNErr;
    case ENAMETOOLONG:
    case EILSEQ:
        return bdNamErr;
    case EACCES:
    case EPERM:
    case EROFS:
        return afpAccessDenied;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return dskFulErr;
    case EINVAL:
    case EBADF:
        return paramErr;
    default:
        return ioErr;
    }
}

OSErr CodeOfResult(long result) noexcept {
    return result < 0 ? CodeOf(errno) : noErr;
}

} // namespace platform
