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

// Looked at from the root on: what lies in folders of root alone cannot be exchanged by others
// while the way goes on.
bool IsSafeForRoot(std::string const& folder) {
    char whole[PATH_MAX];
    if (realpath(folder.c_str(), whole) == nullptr) {
        return false;
    }
    std::string const path = whole;
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
        if (!BelongsToRootAlone(path.substr(0, slash))) {
            return false;
        }
    }
    return BelongsToRootAlone("/") && BelongsToRootAlone(path);
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
