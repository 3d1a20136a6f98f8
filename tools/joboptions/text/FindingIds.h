// The ids of findings, as docs/findings.md lists them.
#pragma once

#include <string>
#include <vector>

namespace joboptions {

struct FindingId {
    std::string id;
    std::string meaning; // in a few words
};

// All ids, in the order of the document.
std::vector<FindingId> const& FindingIds();

} // namespace joboptions
