// The settings that are listed, what the command line tells of them, and finding one by its name.
#pragma once

#include "pdfsettings/Component.h"
#include "pdfsettings/SettingsList.h"
#include "tools/joboptions/commands/Options.h"

#include <optional>
#include <string>
#include <vector>

namespace joboptions {

struct ListEntry {
    pdfsettings::ListedSettings settings;
    bool isUsers;                             // in the user's folder, not in the administrator's
    bool isHidden;                            // from the application that was asked for
    std::vector<std::string> readOnlyReasons; // all of them
    std::vector<std::string> shadowed;        // the files that are not listed because of it
};

// All of them by their names, for an application or for none.
std::vector<ListEntry>
ReadEntries(pdfsettings::Component const& component, std::optional<std::string> const& application);

// The path of the settings that file means: those of that name in the list for the application that
// options name. Without one, for a path with a slash and for "-" it is file itself. Throws Failure
// with Status::kBadInput when no settings are listed under the name.
std::string
Locate(pdfsettings::Component const& component, std::string const& file, Options const& options);

// The same for settings that are to be changed in their place. Throws Failure with Status::kRefused
// and all reasons when they are listed as read-only, unless options say that the result goes
// elsewhere.
std::string LocateForChange(
    pdfsettings::Component const& component, std::string const& file, Options const& options);

// As Locate, where no component runs.
std::string Locate(std::string const& file, Options const& options);

} // namespace joboptions
