// KEY=VALUE on the command line.
#pragma once

#include "host/Component.h"
#include "host/Schema.h"
#include "host/Value.h"

#include <string>
#include <vector>

namespace joboptions {

// The changes that assignments ask for: each is a path, as in pdfsettings::Find, "=", and a value
// in the syntax of a settings file. The result holds the whole new value of each top-level key that
// is touched; what lies beside a nested value comes from settings. Throws Failure with
// Status::kWrongCall and a message for each assignment that cannot be understood, which says what
// the rules expect for the key.
pdfsettings::Dictionary ReadAssignments(
    pdfsettings::Component const& component,
    pdfsettings::Dictionary const& settings,
    std::vector<pdfsettings::SettingRule> const& rules,
    std::vector<std::string> const& assignments);

} // namespace joboptions
