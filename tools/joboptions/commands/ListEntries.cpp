#include "tools/joboptions/commands/ListEntries.h"

#include "pdfsettings/AdminPreferences.h"
#include "tools/joboptions/commands/Shadows.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

namespace joboptions {

using pdfsettings::ListedSettings;
using pdfsettings::SettingsList;

namespace {

// Whether its owner may write a file, and whether nobody may.
struct Rights {
    bool fMayOwnerWrite = true;
    bool fIsLocked = false;
};

Rights RightsOf(std::string const& path) {
    struct statx status {};
    if (statx(AT_FDCWD, path.c_str(), 0, STATX_MODE, &status) != 0) {
        return {};
    }
    return {(status.stx_mode & S_IWUSR) != 0, (status.stx_attributes & STATX_ATTR_IMMUTABLE) != 0};
}

std::vector<std::string> ReasonsFor(ListedSettings const& settings, bool isUsers) {
    std::vector<std::string> reasons;
    if (!settings.isReadOnly) {
        return reasons;
    }
    Rights const rights = RightsOf(settings.path);
    if (!isUsers) {
        reasons.emplace_back("it lies in the administrator's folder");
    }
    // A display name may be the file's own name: then there is no other reason.
    bool const hasOther = !isUsers || !rights.fMayOwnerWrite || rights.fIsLocked;
    if (settings.name != OwnName(settings.path) || !hasOther) {
        reasons.emplace_back("it is shown under a display name");
    }
    if (!rights.fMayOwnerWrite) {
        reasons.emplace_back("its owner may not write it");
    }
    if (rights.fIsLocked) {
        reasons.emplace_back("it is locked");
    }
    return reasons;
}

ListEntry MakeEntry(
    ListedSettings settings,
    std::filesystem::path const& adminFolder,
    std::optional<std::string> const& application) {
    auto const folder = std::filesystem::path(settings.path).parent_path();
    std::error_code error;
    bool const isUsers = !std::filesystem::equivalent(folder, adminFolder, error);
    bool const isHidden = application && settings.IsHiddenFrom(*application);
    auto reasons = ReasonsFor(settings, isUsers);
    return {std::move(settings), isUsers, isHidden, std::move(reasons), {}};
}

} // namespace

std::string OwnName(std::filesystem::path const& path) {
    std::string const name = path.filename().string();
    bool const hasExtension = name.size() > kExtension.size() && name.ends_with(kExtension);
    return hasExtension ? name.substr(0, name.size() - kExtension.size()) : name;
}

std::vector<ListEntry> ReadEntries(
    pdfsettings::Component const& component, std::optional<std::string> const& application) {
    auto const preferences = pdfsettings::AdminPreferences::Read();
    std::vector<ListEntry> entries;
    for (ListedSettings& settings : SettingsList::Read(component, application)) {
        entries.push_back(
            MakeEntry(std::move(settings), preferences.SettingsFolder(), application));
    }
    std::ranges::sort(entries, {}, [](ListEntry const& entry) -> std::string const& {
        return entry.settings.name;
    });
    AddShadowed(preferences, SettingsList::UserFolder(component), application, entries);
    return entries;
}

} // namespace joboptions
