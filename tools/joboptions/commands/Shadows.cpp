#include "tools/joboptions/commands/Shadows.h"

#include "tools/joboptions/text/Utf8.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <map>
#include <set>
#include <system_error>
#include <unordered_map>

namespace joboptions {

namespace {

// The paths of a folder that could be listed.
std::vector<std::filesystem::path> SettingsIn(std::string const& folder) {
    std::vector<std::filesystem::path> paths;
    std::error_code error;
    std::filesystem::directory_iterator file(folder, error);
    for (; !error && file != std::filesystem::directory_iterator(); file.increment(error)) {
        std::string const name = file->path().filename().string();
        std::size_t const dot = std::min(name.rfind('.'), name.size());
        if (name.substr(dot).starts_with(kExtension) && IsPlainText(name)) {
            paths.push_back(file->path().lexically_normal());
        }
    }
    std::ranges::sort(paths);
    return paths;
}

} // namespace

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

} // namespace joboptions
