#include "tools/joboptions/ListEntries.h"

#include <algorithm>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace joboptions {

using pdfsettings::ListedSettings;
using pdfsettings::SettingsList;

namespace {

constexpr std::string_view kExtension = ".joboptions";

// The file's own name as it would be shown.
std::string NameOf(std::filesystem::path const& path) {
    std::string const name = path.filename().string();
    bool const hasExtension = name.size() > kExtension.size() && name.ends_with(kExtension);
    return hasExtension ? name.substr(0, name.size() - kExtension.size()) : name;
}

bool MayOwnerWrite(std::string const& path) {
    struct stat status {};
    return stat(path.c_str(), &status) != 0 || (status.st_mode & S_IWUSR) != 0;
}

std::vector<std::string> ReasonsFor(ListedSettings const& settings, bool isUsers) {
    std::vector<std::string> reasons;
    if (!settings.isReadOnly) {
        return reasons;
    }
    if (!isUsers) {
        reasons.emplace_back("it lies in the administrator's folder");
    }
    if (settings.name != NameOf(settings.path)) {
        reasons.emplace_back("it is shown under a display name");
    }
    if (!MayOwnerWrite(settings.path)) {
        reasons.emplace_back("its owner may not write it");
    }
    if (reasons.empty()) {
        reasons.emplace_back("it is locked");
    }
    return reasons;
}

ListEntry MakeEntry(
    ListedSettings settings,
    std::filesystem::path const& adminFolder,
    std::optional<std::string> const& application) {
    bool const isUsers = std::filesystem::path(settings.path).parent_path() != adminFolder;
    bool const isHidden = application && settings.IsHiddenFrom(*application);
    auto reasons = ReasonsFor(settings, isUsers);
    return {std::move(settings), isUsers, isHidden, std::move(reasons), {}};
}

// Gives each entry the files of the user's folder that it keeps out of the list. A folder that
// cannot be read has none.
void AddShadowed(std::filesystem::path const& userFolder, std::vector<ListEntry>& entries) {
    std::unordered_map<std::string, ListEntry*> byName;
    std::unordered_set<std::string> listed;
    for (ListEntry& entry : entries) {
        byName.emplace(entry.settings.name, &entry);
        listed.insert(entry.settings.path);
    }
    std::error_code error;
    for (auto const& file : std::filesystem::directory_iterator(userFolder, error)) {
        std::string const path = file.path().string();
        auto const found = byName.find(NameOf(path));
        if (path.ends_with(kExtension) && !listed.contains(path) && found != byName.end()) {
            found->second->shadowed.push_back(path);
        }
    }
    for (ListEntry& entry : entries) {
        std::ranges::sort(entry.shadowed);
    }
}

} // namespace

std::vector<ListEntry> ReadEntries(
    pdfsettings::Component const& component, std::optional<std::string> const& application) {
    std::string const adminFolder = SettingsList::AdminFolder();
    std::vector<ListEntry> entries;
    for (ListedSettings& settings : SettingsList::Read(component, application.value_or(""))) {
        entries.push_back(MakeEntry(std::move(settings), adminFolder, application));
    }
    std::ranges::sort(entries, {}, [](ListEntry const& entry) -> std::string const& {
        return entry.settings.name;
    });
    AddShadowed(SettingsList::UserFolder(component), entries);
    return entries;
}

} // namespace joboptions
