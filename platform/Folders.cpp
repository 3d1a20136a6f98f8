// The standard folders: the only place where the environment is looked at.
#include "platform/FileManager.h"
#include "platform/FileSystem.h"
#include "platform/NewFiles.h"

#include <cerrno>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>
#include <vector>

using platform::AtService;
using platform::FileStatus;

namespace {

constexpr mode_t kPrivateFolderMode = 0700;

// The value of an environment variable if it is an absolute path, else empty. Nothing in a program
// with raised rights.
std::string AbsoluteFromEnvironment(char const* variable) {
    char const* const value = secure_getenv(variable);
    return value != nullptr && value[0] == '/' ? value : "";
}

std::string HomeFromDatabase() {
    constexpr std::size_t kLargestEntry = std::size_t{1} << 20;
    passwd entry{};
    passwd* found = nullptr;
    std::vector<char> buffer(1024);
    while (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE &&
           buffer.size() < kLargestEntry) {
        buffer.resize(buffer.size() * 2);
    }
    return found != nullptr && found->pw_dir != nullptr ? found->pw_dir : "";
}

// Further folders are joined to it by a slash of their own.
std::string WithoutTrailingSlashes(std::string folder) {
    while (folder.size() > 1 && folder.back() == '/') {
        folder.pop_back();
    }
    return folder;
}

// The folder that a variable names, else one below the user's home; empty when there is no home.
std::string UserFolder(char const* variable, char const* belowHome) {
    std::string const folder = AbsoluteFromEnvironment(variable);
    if (!folder.empty()) {
        return WithoutTrailingSlashes(folder);
    }
    std::string const fromEnvironment = AbsoluteFromEnvironment("HOME");
    std::string const home = fromEnvironment.empty() ? HomeFromDatabase() : fromEnvironment;
    return home.empty() ? home : WithoutTrailingSlashes(home) + belowHome;
}

} // namespace

// No variable moves an administrator's folders, or a user could get around them.
std::string platform::StandardFolder(SInt16 domain, UInt32 folderType) {
    bool const isSupport = folderType == kApplicationSupportFolderType;
    if (domain == kLocalDomain) {
        return isSupport ? PDFSETTINGS_ADMIN_SUPPORT_FOLDER : PDFSETTINGS_ADMIN_PREFERENCES_FOLDER;
    }
    return isSupport ? UserFolder("XDG_DATA_HOME", "/.local/share")
                     : UserFolder("XDG_CONFIG_HOME", "/.config");
}

namespace {

// Makes the folder at path and what is missing above it; another program may do so too meanwhile.
// Failures show when somebody uses the folder.
void MakeFolders(std::string const& path) {
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
        platform::MakeFolder(path.substr(0, slash), kPrivateFolderMode);
    }
    platform::MakeFolder(path, kPrivateFolderMode);
}

} // namespace

OSErr FSFindFolder(
    SInt16 domain, UInt32 folderType, Boolean createFolder, FSRef* foundRef) noexcept {
    bool const isKnown =
        (domain == kLocalDomain || domain == kUserDomain) &&
        (folderType == kApplicationSupportFolderType || folderType == kPreferencesFolderType);
    if (!isKnown) {
        return fnfErr;
    }
    return AtService([=] {
        std::string path = platform::StandardFolder(domain, folderType);
        bool const isToExist = createFolder != kDontCreateFolder && domain == kUserDomain &&
                               folderType == kApplicationSupportFolderType && !path.empty();
        if (isToExist) {
            MakeFolders(path);
        }
        FileStatus status;
        OSErr const error = status.Read(path);
        bool const isInTheWay = error == noErr && !status.IsDirectory();
        if (isInTheWay || (error != noErr && !isToExist)) {
            return error == noErr ? dirNFErr : error;
        }
        *foundRef = {std::move(path)};
        return noErr;
    });
}
