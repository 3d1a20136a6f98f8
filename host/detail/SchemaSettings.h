// The rules of a schema as a list of settings.
#pragma once

#include "pdfsettings/Schema.h"

#include <string>
#include <vector>

namespace pdfsettings::detail {

struct SchemaSettings {
    std::vector<SettingRule> fRules;
    // The structure at which listing came to an end, and why; both empty where it did not.
    std::string fStructure;
    std::string fFault;
};

// The settings that the structures of a schema describe, in their order, each before those that are
// nested in it. A structure within itself is not followed. A text of a few lines may name more than
// any memory holds, so there are limits of depth and number.
SchemaSettings ListSettings(Dictionary const& structures);

} // namespace pdfsettings::detail
