#include "tools/joboptions/commands/Trial.h"

#include "pdfsettings/SettingsList.h"
#include "tools/joboptions/commands/Output.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <linux/capability.h>
#include <memory>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <system_error>
#include <unistd.h>

namespace joboptions {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void FailAt(std::string const& place, std::string const& reason) {
    Fail(Status::kBadInput, place, "no trial is possible: " + reason);
}

void Require(bool isDone, std::string const& place) {
    if (!isDone) {
        FailAt(place, std::generic_category().message(errno));
    }
}

void WriteLine(char const* file, std::string const& line) {
    std::ofstream(file) << line;
}

// A view of the file system of this process alone. An ordinary user gets it as the only user of a
// namespace.
void EnterOwnView() {
    uid_t const user = geteuid();
    gid_t const group = getegid();
    if (unshare(CLONE_NEWNS) != 0) {
        Require(unshare(CLONE_NEWNS | CLONE_NEWUSER) == 0, "a view of its own");
        WriteLine("/proc/self/setgroups", "deny");
        WriteLine("/proc/self/uid_map", fmt::format("{0} {0} 1", user));
        WriteLine("/proc/self/gid_map", fmt::format("{0} {0} 1", group));
    }
    bool const isOwn = mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    if (!isOwn && errno == EINVAL) {
        FailAt("/", "the root of this process is not a mount point, as in a chroot");
    }
    Require(isOwn, "/");
}

// Shows source, a path that cannot be hidden by what is shown elsewhere, at place.
void Bind(std::string const& source, fs::path const& place) {
    Require(mount(source.c_str(), place.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0, place);
}

// An open folder: its path leads to it whatever is shown in front of it.
class OpenFolder {
public:
    explicit OpenFolder(fs::path const& folder)
        : fNumber(open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)) {
        Require(fNumber >= 0, folder.string());
    }
    OpenFolder(OpenFolder const&) = delete;
    OpenFolder& operator=(OpenFolder const&) = delete;
    ~OpenFolder() { close(fNumber); }

    std::string Path() const { return fmt::format("/proc/self/fd/{}", fNumber); }

private:
    int fNumber;
};

// A new file or folder. What is there already is never touched.
void Make(fs::path const& item, bool isFolder) {
    if (isFolder) {
        std::error_code error;
        fs::create_directories(item, error);
        if (error) {
            FailAt(item, error.message());
        }
        return;
    }
    int const made = open(item.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    Require(made >= 0, item);
    close(made);
}

dev_t DeviceOf(fs::path const& folder) {
    struct stat status {};
    Require(stat(folder.c_str(), &status) == 0, folder);
    return status.st_dev;
}

// A folder in memory in place of another one. The root of a process cannot be replaced: what is
// made in it would be made on the machine.
void MountMemory(fs::path const& folder) {
    dev_t const before = DeviceOf(folder);
    Require(mount("none", folder.c_str(), "tmpfs", 0, "mode=755") == 0, folder);
    if (DeviceOf(folder) == before) {
        FailAt(folder, "no folder can be shown in it; make the first folder of the path");
    }
}

// Shows one item of a folder in the folder that has taken its place. What is neither a folder nor
// a file is left out.
void ShowItem(fs::directory_entry const& entry, fs::path const& item) {
    if (entry.is_symlink()) {
        fs::copy_symlink(entry.path(), item);
    } else if (entry.is_directory() || entry.is_regular_file()) {
        Make(item, entry.is_directory());
        Bind(entry.path(), item);
    }
}

void ShowItems(fs::path const& former, fs::path const& folder, fs::path const& hidden) {
    for (fs::directory_entry const& entry : fs::directory_iterator(former)) {
        if (fs::path const item = folder / entry.path().filename(); item != hidden) {
            ShowItem(entry, item);
        }
    }
}

// Replaces a folder by one in memory that shows the same, but one item, and can be added to.
void MakeWritable(fs::path const& folder, fs::path const& hidden = {}) {
    OpenFolder const former(folder);
    MountMemory(folder);
    try {
        ShowItems(former.Path(), folder, hidden);
    } catch (fs::filesystem_error const& error) {
        FailAt(folder, error.code().message());
    }
}

// Makes a missing folder, in a view of its last parent that exists.
void RequireFolder(fs::path const& folder) {
    fs::path parent = folder;
    std::error_code error;
    while (!fs::is_directory(parent, error)) {
        parent = parent.parent_path();
    }
    if (parent != folder) {
        MakeWritable(parent);
        Make(folder, /*isFolder=*/true);
    }
}

// The list in the folder, or none, in place of the machine's.
void ShowPreferences(OpenFolder const& folder) {
    fs::path const place = pdfsettings::AdministratorPreferences();
    fs::path const shown = fs::path(folder.Path()) / place.filename();
    std::error_code error;
    bool const isThere = fs::exists(shown, error);
    if (isThere || fs::exists(place, error)) {
        RequireFolder(place.parent_path());
        MakeWritable(place.parent_path(), place);
    }
    if (isThere) {
        Make(place, /*isFolder=*/false);
        Bind(shown, place);
    }
}

void ShowAdministrator(OpenFolder const& folder, std::string const& name) {
    ShowPreferences(folder);
    fs::path const place = pdfsettings::AdministratorFolder();
    if (place.empty()) {
        Fail(Status::kBadInput, name, "the administrator's folder is disabled or has no place");
    }
    RequireFolder(place);
    Bind(folder.Path(), place);
}

// The user's real folders, which are made where they are missing, are left alone.
void ShowUser(OpenFolder const& folder) {
    constexpr char kPlace[] = "/mnt";
    MakeWritable(kPlace);
    setenv(
        "XDG_DATA_HOME", fmt::format("{}/joboptions-trial/share", kPlace).c_str(), /*overwrite=*/1);
    setenv(
        "XDG_CONFIG_HOME",
        fmt::format("{}/joboptions-trial/config", kPlace).c_str(),
        /*overwrite=*/1);
    Bind(folder.Path(), pdfsettings::UserFolder());
}

// What an ordinary user needed to show folders would also open files that this user may not read.
void DropRights() {
    if (geteuid() != 0) {
        __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
        __user_cap_data_struct const none[_LINUX_CAPABILITY_U32S_3] = {};
        Require(syscall(SYS_capset, &header, none) == 0, "a view without rights");
    }
}

// Null for an empty path.
std::unique_ptr<OpenFolder> Opened(std::string const& folder) {
    return folder.empty() ? nullptr : std::make_unique<OpenFolder>(folder);
}

} // namespace

void ShowFolders(std::string const& adminFolder, std::string const& userFolder) {
    if (adminFolder.empty() && userFolder.empty()) {
        return;
    }
    EnterOwnView();
    auto const admin = Opened(adminFolder);
    auto const user = Opened(userFolder);
    // In this order: what is shown for the administrator may be in front of the user's folder.
    if (user) {
        ShowUser(*user);
    }
    if (admin) {
        ShowAdministrator(*admin, adminFolder);
    }
    DropRights();
}

} // namespace joboptions
