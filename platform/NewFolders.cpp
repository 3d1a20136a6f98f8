#include "platform/NewFolders.h"

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

// Whether each part of the path is a folder of root alone or a link of root. From the root on: what
// lies in folders of root alone cannot be exchanged by others before the next part is looked at.
bool BelongsToRootThroughout(std::string const& path) {
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

// The folder without links, for root to make another one in; empty where others could exchange it.
std::string FolderForRoot(std::string const& folder) {
    char whole[PATH_MAX];
    bool const isSafe = realpath(folder.c_str(), whole) != nullptr && BelongsToRootAlone("/") &&
                        BelongsToRootThroughout(whole) && BelongsToRootThroughout(folder);
    return isSafe ? std::string(whole) + "/" : "";
}

} // namespace

OSErr MakeFolder(std::string const& path, mode_t mode) {
    struct stat status {};
    if (lstat(path.c_str(), &status) == 0) {
        return dupFNErr;
    }
    std::size_t const name = path.rfind('/') + 1; // 0 without a slash
    std::string folder = name == 0 ? "./" : path.substr(0, name);
    if (geteuid() == 0) {
        folder = FolderForRoot(folder);
    }
    if (getauxval(AT_SECURE) != 0 || folder.empty()) {
        return afpAccessDenied;
    }
    return CodeOfResult(mkdir((folder + path.substr(name)).c_str(), mode));
}

} // namespace platform
