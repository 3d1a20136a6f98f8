// Files that a list leaves out because of others.
#pragma once

#include "pdfsettings/AdminPreferences.h"
#include "tools/joboptions/commands/ListEntries.h"

#include <optional>
#include <string>
#include <vector>

namespace joboptions {

// Gives each entry the files of both folders that would be listed under its name and are not. A
// folder that cannot be read has none.
void AddShadowed(
    pdfsettings::AdminPreferences const& preferences,
    std::string const& userFolder,
    std::optional<std::string> const& application,
    std::vector<ListEntry>& entries);

} // namespace joboptions
