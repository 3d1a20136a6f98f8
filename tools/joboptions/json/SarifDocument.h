// Findings in the Static Analysis Results Interchange Format 2.1.0 of OASIS, which code hosts read.
#pragma once

#include "tools/joboptions/text/Findings.h"

#include <string>
#include <vector>

namespace joboptions {

// A log with one run of this version of the program, which ends with a line end.
std::string SarifDocument(std::vector<CheckedFile> const& files);

} // namespace joboptions
