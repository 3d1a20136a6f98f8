// The settings that are listed, with what the command line tells of them.
#pragma once

#include "host/SettingsList.h"

#include <optional>
#include <string>
#include <vector>

namespace joboptions {

struct ListEntry {
    pdfsettings::ListedSettings settings;
    bool isUsers;                             // in the user's folder, not in the administrator's
    bool isHidden;                            // from the application that was asked for
    std::vector<std::string> readOnlyReasons; // all of them
    std::vector<std::string> shadowed;        // the user's files that are not listed because of it
};

// All of them by their names, for an application or for none.
std::vector<ListEntry>
ReadEntries(pdfsettings::Component const& component, std::optional<std::string> const& application);

} // namespace joboptions
