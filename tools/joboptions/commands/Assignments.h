// What is assigned to settings on the command line.
#pragma once

#include "pdfsettings/Component.h"
#include "pdfsettings/Schema.h"
#include "pdfsettings/Value.h"

#include <string>
#include <vector>

namespace joboptions {

// A value as it stands in a file, and the path that it is for.
struct ValueText {
    std::string fPath;
    std::string fText;
};

// What assignments ask for.
struct Assignments {
    pdfsettings::Dictionary fChanges; // the whole new value of each top-level key that is touched
    std::vector<ValueText> fTexts;    // one for each, in their order
};

// The changes that assignments ask for: each is a path, as in pdfsettings::Find, "=", and a value
// in the syntax of a settings file. What lies beside a nested value comes from settings. Throws
// Failure with Status::kWrongCall and a message for each assignment that cannot be understood,
// which says what the rules expect for the key.
Assignments ReadAssignments(
    pdfsettings::Component const& component,
    pdfsettings::Dictionary const& settings,
    std::vector<pdfsettings::SettingRule> const& rules,
    std::vector<std::string> const& assignments);

} // namespace joboptions
