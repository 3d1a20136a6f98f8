#include "platform/NewFolders.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <sys/auxv.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/SystemErrors.h"

namespace platform {

namespace {

bool BelongsToRootAlone(std::string const& folder) {
    struct stat status {};
    return lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == 0 &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

bool IsLinkOfRoot(std::string const& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode) && status.st_uid == 0;
}

// Whether all on the way is root's. Looked at from the root on: what lies in folders of root alone
// cannot be exchanged by others while the way goes on.
bool IsWayOfRoot(std::string const& path) {
    for (std::size_t end = path.find('/', 1); true; end = path.find('/', end + 1)) {
        std::string const part = path.substr(0, end);
        if (!BelongsToRootAlone(part) && !IsLinkOfRoot(part)) {
            return false;
        }
        if (end == std::string::npos) {
            return true;
        }
    }
}

// The way itself and the way behind its links.
bool IsSafeForRoot(std::string const& folder) {
    char whole[PATH_MAX];
    return realpath(folder.c_str(), whole) != nullptr && BelongsToRootAlone("/") &&
           BelongsToRootAlone(whole) && IsWayOfRoot(whole) && IsWayOfRoot(folder);
}

bool MayMakeFoldersIn(std::string const& folder) {
    return getauxval(AT_SECURE) == 0 && (geteuid() != 0 || IsSafeForRoot(folder));
}

std::string ParentOf(std::string const& path) {
    std::size_t const slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

} // namespace

OSErr MakeFolder(std::string const& path, mode_t mode) {
    struct stat status {};
    if (lstat(path.c_str(), &status) == 0) {
        return dupFNErr;
    }
    if (!MayMakeFoldersIn(ParentOf(path))) {
        return afpAccessDenied;
    }
    return CodeOfResult(mkdir(path.c_str(), mode));
}

} // namespace platform
