// What a schema says of settings, as text.
#pragma once

#include "pdfsettings/Schema.h"

#include <string>
#include <vector>

namespace joboptions {

// A line for each setting: its key and its help, aligned.
std::string RuleLines(std::vector<pdfsettings::SettingRule> const& rules);

// A paragraph for each setting with all that there is to say of it.
std::string RuleParagraphs(std::vector<pdfsettings::SettingRule> const& rules);

} // namespace joboptions
