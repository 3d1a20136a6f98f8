// Several sets of settings side by side, as text and as a page.
#pragma once

#include "pdfsettings/Compare.h"

#include <cstddef>
#include <string>
#include <vector>

namespace joboptions {

struct ComparedSets {
    std::vector<std::string> names; // one for each set
    std::vector<pdfsettings::ComparedSetting> settings;
};

// A table of at most width cells, as far as its columns allow: a column for each set, a row for
// each setting, long values on several lines, and a heading for each group. With color, keys are
// coloured.
std::string ComparisonText(ComparedSets const& sets, std::size_t width, bool color);

// A page in HTML that needs nothing else: no scripts, and no fonts or pictures from elsewhere.
// Groups fold, values that differ from those of the first set are marked, and it follows the
// reader's choice of dark and light.
std::string ComparisonPage(ComparedSets const& sets);

} // namespace joboptions
