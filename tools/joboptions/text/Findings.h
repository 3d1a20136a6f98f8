// Faults of settings as the tool shows them.
#pragma once

#include "pdfsettings/Finding.h"

#include <string>
#include <vector>

namespace joboptions {

// "file: key: message" without a line end.
std::string FindingText(std::string const& file, pdfsettings::Finding const& finding);

// The same of all findings, in lines.
std::string
FindingsText(std::string const& file, std::vector<pdfsettings::Finding> const& findings);

} // namespace joboptions
