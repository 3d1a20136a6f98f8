// The standard folders. Only this file reads the environment.
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

// The value of an environment variable if it is an absolute path, else empty. Always empty in a
// program with raised privileges.
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

// Callers append folders with a leading slash.
std::string WithoutTrailingSlashes(std::string folder) {
    while (folder.size() > 1 && folder.back() == '/') {
        folder.pop_back();
    }
    return folder;
}

// The folder that a variable names, else a folder below the user's home; empty if there is no home.
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

// No variable changes an administrator's folders: a user could bypass them otherwise.
std::string platform::StandardFolder(SInt16 domain, UInt32 folderType) {
    bool const isSupport = folderType == kApplicationSupportFolderType;
    if (domain == kLocalDomain) {
        return isSupport ? PDFSETTINGS_ADMIN_SUPPORT_FOLDER : PDFSETTINGS_ADMIN_PREFERENCES_FOLDER;
    }
    return isSupport ? UserFolder("XDG_DATA_HOME", "/.local/share")
                     : UserFolder("XDG_CONFIG_HOME", "/.config");
}

namespace {

// Creates the folder at path and its missing parents; another program may do so at the same time.
// Failures are ignored here: they show when the folder is used.
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
