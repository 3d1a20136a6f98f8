#include "platform/NewFiles.h"

#include "platform/FileSystem.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <sys/auxv.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

OSErr CreatedFile::Make(
    std::string const& folder, std::string const& name, std::shared_ptr<CreatedFile>* made) {
    constexpr mode_t kFileMode = 0666;
    std::shared_ptr<CreatedFile> const file(new CreatedFile(name));
    file->fFolder = OpenPath(AT_FDCWD, folder.c_str(), O_PATH | O_DIRECTORY);
    if (file->fFolder < 0) {
        return CodeOf(errno);
    }
    file->fFile = OpenPath(file->fFolder, name.c_str(), O_RDWR | O_CREAT | O_EXCL, kFileMode);
    if (file->fFile < 0) {
        return CodeOf(errno);
    }
    *made = file;
    return noErr;
}

CreatedFile::~CreatedFile() {
    for (int const file : {fFile, fFolder}) {
        if (file >= 0) {
            close(file);
        }
    }
}

int CreatedFile::Duplicate() const noexcept {
    return fcntl(fFile, F_DUPFD_CLOEXEC, 0);
}

OSErr CreatedFile::Delete() const noexcept {
    struct stat file {};
    struct stat found {};
    if (fstat(fFile, &file) != 0 ||
        fstatat(fFolder, fName.c_str(), &found, AT_SYMLINK_NOFOLLOW) != 0) {
        return CodeOf(errno);
    }
    if (file.st_dev != found.st_dev || file.st_ino != found.st_ino) {
        return fnfErr;
    }
    return CodeOfResult(unlinkat(fFolder, fName.c_str(), 0));
}

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

// Whether each part of the path is a folder that only root can change, or a link that root owns.
// Checked from the root down: others cannot replace an item in such a folder before the next part
// is checked.
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

// The path of the folder without links, safe for root to create a folder in; empty if others could
// replace part of it.
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
