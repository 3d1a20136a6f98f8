#include "platform/CreatedFile.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/FileStatus.h"
#include "platform/SystemErrors.h"

namespace platform {

namespace {

constexpr mode_t kFileMode = 0666;

} // namespace

OSErr CreatedFile::Make(
    std::string const& folder, std::string const& name, std::shared_ptr<CreatedFile>* made) {
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

} // namespace platform
