// Settings that a schema does not know.
#pragma once

#include "tools/joboptions/text/Diagnostics.h"

namespace joboptions {

// The settings of a file that the schema does not know, each with the one that may be meant. Where
// the schema leaves a dictionary open, nothing in it is unknown.
std::vector<Diagnostic> UnknownKeys(
    pdfsettings::Document const& document, std::vector<pdfsettings::SettingRule> const& rules);

} // namespace joboptions
