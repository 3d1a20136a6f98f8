#include "host/detail/AdminPreferences.h"

#include "api/SettingsPlaces.h"
#include "host/detail/FilePath.h"
#include "host/detail/PropertyList.h"
#include "platform/FileManager.h"

#include <optional>
#include <unistd.h>

namespace pdfsettings::detail {

namespace {

// Whether the administrator's folder of that type exists.
bool HasFolder(UInt32 folderType) {
    FSRef folder;
    return FSFindFolder(kLocalDomain, folderType, kDontCreateFolder, &folder) == noErr;
}

// The path in a property list; nothing if it has none.
std::optional<std::string> PathIn(PropertyValue const& list) {
    PropertyValue const* const path = list.Find(SettingsPlaces::kPathKey);
    if (path == nullptr || !path->IsString()) {
        return std::nullopt;
    }
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    bool const isMarked = path->fText.starts_with(kByteOrderMark);
    return path->fText.substr(isMarked ? kByteOrderMark.size() : 0);
}

// The pairs of names, up to the first element that is not a string. The first pair for a file
// counts.
std::map<std::string, std::string> PairsIn(PropertyValue const& names) {
    std::map<std::string, std::string> pairs;
    for (std::size_t i = 0; i + 1 < names.fEntries.size(); i += 2) {
        PropertyValue const& file = names.fEntries[i].fValue;
        PropertyValue const& shown = names.fEntries[i + 1].fValue;
        if (!file.IsString() || !shown.IsString()) {
            break;
        }
        pairs.emplace(file.fText, shown.fText);
    }
    return pairs;
}

std::map<std::string, std::map<std::string, std::string>> NamesIn(PropertyValue const& list) {
    std::map<std::string, std::map<std::string, std::string>> names;
    PropertyValue const* const applications = list.Find(kDisplayNamesKey);
    if (applications == nullptr || !applications->IsDictionary()) {
        return names;
    }
    for (auto const& [application, pairs] : applications->fEntries) {
        if (pairs.IsArray()) {
            names.emplace(application, PairsIn(pairs));
        }
    }
    return names;
}

} // namespace

AdminPreferences AdminPreferences::Read() {
    AdminPreferences preferences;
    std::optional<std::string> path;
    if (HasFolder(kPreferencesFolderType)) {
        preferences.fFile = AdminPreferencesFile().string();
        auto const list = ReadPropertyList(preferences.fFile);
        bool const isUsable = list && list->IsDictionary();
        preferences.fIsUnusable = !isUsable && access(preferences.fFile.c_str(), F_OK) == 0;
        path = isUsable ? PathIn(*list) : std::nullopt;
        preferences.fNames = isUsable ? NamesIn(*list) : std::map<std::string, Names>();
    }
    if (path) {
        preferences.fSettingsFolder = FolderPath(*path);
    } else if (HasFolder(kApplicationSupportFolderType)) {
        preferences.fSettingsFolder =
            platform::StandardFolder(kLocalDomain, kApplicationSupportFolderType) +
            SettingsPlaces::kSettingsFolder;
    }
    return preferences;
}

AdminPreferences::Names AdminPreferences::DisplayNames(std::string const& application) const {
    auto const found = fNames.find(application);
    return found == fNames.end() ? Names() : found->second;
}

} // namespace pdfsettings::detail
