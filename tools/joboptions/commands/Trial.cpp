#include "tools/joboptions/commands/Trial.h"

#include "pdfsettings/SettingsList.h"
#include "tools/joboptions/commands/Output.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <memory>
#include <sched.h>
#include <sys/mount.h>
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
    Require(unshare(CLONE_NEWNS | (user == 0 ? 0 : CLONE_NEWUSER)) == 0, "a view of its own");
    if (user != 0) {
        WriteLine("/proc/self/setgroups", "deny");
        WriteLine("/proc/self/uid_map", fmt::format("{0} {0} 1", user));
        WriteLine("/proc/self/gid_map", fmt::format("{0} {0} 1", group));
    }
    Require(mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "/");
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

void Make(fs::path const& item, bool isFolder) {
    std::error_code error;
    if (isFolder) {
        fs::create_directories(item, error);
    } else {
        std::ofstream const made(item);
    }
}

// Replaces a folder by one in memory that shows the same, but one item, and can be added to.
void MakeWritable(fs::path const& folder, fs::path const& hidden = {}) {
    OpenFolder const former(folder);
    Require(mount("none", folder.c_str(), "tmpfs", 0, "mode=755") == 0, folder);
    for (fs::directory_entry const& entry : fs::directory_iterator(former.Path())) {
        fs::path const item = folder / entry.path().filename();
        if (entry.is_symlink() && item != hidden) {
            fs::copy_symlink(entry.path(), item);
        } else if (item != hidden && (entry.is_directory() || entry.is_regular_file())) {
            Make(item, entry.is_directory());
            Bind(entry.path(), item);
        }
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
    setenv("XDG_DATA_HOME", fmt::format("{}/user/share", kPlace).c_str(), /*overwrite=*/1);
    setenv("XDG_CONFIG_HOME", fmt::format("{}/user/config", kPlace).c_str(), /*overwrite=*/1);
    Bind(folder.Path(), pdfsettings::UserFolder());
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
    if (admin) {
        ShowAdministrator(*admin, adminFolder);
    }
    if (user) {
        ShowUser(*user);
    }
}

} // namespace joboptions
