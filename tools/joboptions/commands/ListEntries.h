// The settings that are listed, with what the command line tells of them.
#pragma once

#include "pdfsettings/SettingsList.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace joboptions {

struct ListEntry {
    pdfsettings::ListedSettings settings;
    bool isUsers;                             // in the user's folder, not in the administrator's
    bool isHidden;                            // from the application that was asked for
    std::vector<std::string> readOnlyReasons; // all of them
    std::vector<std::string> shadowed;        // the files that are not listed because of it
};

inline constexpr std::string_view kExtension = ".joboptions";

// The name under which a file would be shown without a display name.
std::string OwnName(std::filesystem::path const& path);

// All of them by their names, for an application or for none.
std::vector<ListEntry>
ReadEntries(pdfsettings::Component const& component, std::optional<std::string> const& application);

} // namespace joboptions
