#include "tools/joboptions/commands/ListEntries.h"

#include "format/Tokens.h"
#include "pdfsettings/AdminPreferences.h"
#include "tools/joboptions/commands/Output.h"
#include "tools/joboptions/text/Utf8.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <iterator>
#include <map>
#include <set>
#include <sys/stat.h>
#include <system_error>
#include <unordered_map>
#include <utility>

namespace joboptions {

using pdfsettings::ListedSettings;
using pdfsettings::SettingsList;

namespace {

// The name under which a file would be shown without a display name.
std::string OwnName(std::filesystem::path const& path) {
    std::string const name = path.filename().string();
    bool const hasExtension =
        name.size() > format::kExtension.size() && name.ends_with(format::kExtension);
    return hasExtension ? name.substr(0, name.size() - format::kExtension.size()) : name;
}

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

// The paths of a folder that could be listed.
std::vector<std::filesystem::path> SettingsIn(std::string const& folder) {
    std::vector<std::filesystem::path> paths;
    std::error_code error;
    std::filesystem::directory_iterator file(folder, error);
    for (; !error && file != std::filesystem::directory_iterator(); file.increment(error)) {
        std::string const name = file->path().filename().string();
        std::size_t const dot = std::min(name.rfind('.'), name.size());
        if (name.substr(dot).starts_with(format::kExtension) && IsPlainText(name)) {
            paths.push_back(file->path().lexically_normal());
        }
    }
    std::ranges::sort(paths);
    return paths;
}

// Gives each entry the files of both folders that would be listed under its name and are not. A
// folder that cannot be read has none.
void AddShadowed(
    pdfsettings::AdminPreferences const& preferences,
    std::string const& userFolder,
    std::optional<std::string> const& application,
    std::vector<ListEntry>& entries) {
    std::unordered_map<std::string, ListEntry*> byName;
    std::set<std::filesystem::path> known;
    for (ListEntry& entry : entries) {
        byName.emplace(entry.settings.name, &entry);
        known.insert(std::filesystem::path(entry.settings.path).lexically_normal());
    }
    auto paths = SettingsIn(preferences.SettingsFolder());
    std::ranges::move(SettingsIn(userFolder), std::back_inserter(paths));
    auto const names =
        application ? preferences.DisplayNames(*application) : std::map<std::string, std::string>();
    for (auto const& path : paths) {
        auto const shown = names.find(OwnName(path));
        auto const found = byName.find(shown == names.end() ? OwnName(path) : shown->second);
        if (found != byName.end() && known.insert(path).second) {
            found->second->shadowed.push_back(path.string());
        }
    }
}

ListEntry FindEntry(
    pdfsettings::Component const& component, std::string const& name, Options const& options) {
    auto const entries = ReadEntries(component, options.application);
    auto const found = std::ranges::find_if(
        entries, [&name](ListEntry const& entry) { return entry.settings.name == name; });
    if (found == entries.end()) {
        throw Failure(
            Status::kBadInput,
            fmt::format(
                "{}: no settings are listed under this name; see joboptions list --all --app {}",
                VisibleText(name),
                VisibleText(*options.application)));
    }
    return *found;
}

bool IsListedName(std::string const& file, Options const& options) {
    if (!options.application || file == "-") {
        return false;
    }
    // A listed name may have a slash; a path leads to a file.
    std::error_code error;
    return file.find('/') == std::string::npos || !std::filesystem::exists(file, error);
}

} // namespace

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

std::string
Locate(pdfsettings::Component const& component, std::string const& file, Options const& options) {
    return IsListedName(file, options) ? FindEntry(component, file, options).settings.path : file;
}

std::string LocateForChange(
    pdfsettings::Component const& component, std::string const& file, Options const& options) {
    if (!IsListedName(file, options)) {
        return file;
    }
    ListEntry const entry = FindEntry(component, file, options);
    if (entry.settings.isReadOnly && options.output.empty()) {
        throw Failure(
            Status::kRefused,
            fmt::format(
                "{}: read-only: {}; copy it with -o [read-only]",
                VisibleText(file),
                fmt::join(entry.readOnlyReasons, "; ")));
    }
    return entry.settings.path;
}

std::string Locate(std::string const& file, Options const& options) {
    return IsListedName(file, options) ? Locate(pdfsettings::Component(), file, options) : file;
}

} // namespace joboptions
