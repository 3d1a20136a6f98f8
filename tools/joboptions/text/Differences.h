// What differs between two sets of settings.
#pragma once

#include "pdfsettings/Value.h"

#include <string>
#include <vector>

namespace joboptions {

// A value that differs. It belongs to the settings; null where it is missing.
struct Difference {
    std::string path; // keys and positions, joined by slashes
    pdfsettings::Value const* before;
    pdfsettings::Value const* after;
};

// Whether both are numbers.
bool IsOfNumbers(Difference const& difference);

// The differences by key and value: the order of keys does not matter, and numbers compare by
// value. Nested dictionaries, and arrays of the same length, are compared value by value.
std::vector<Difference>
Compare(pdfsettings::Dictionary const& before, pdfsettings::Dictionary const& after);

// A line for each: "- key value" for one that is missing afterwards, "+ key value" for a new one,
// "~ key value -> value" for a changed one. With color, the signs are coloured for a terminal.
std::string DifferencesText(std::vector<Difference> const& differences, bool color);

} // namespace joboptions
