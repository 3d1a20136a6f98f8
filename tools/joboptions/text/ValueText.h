// Values and differences for people, with everything unprintable made visible (VisibleText).
#pragma once

#include "pdfsettings/Compare.h"
#include "pdfsettings/Value.h"

#include <span>
#include <string>

namespace joboptions {

// The value as it stands in a file, on one line.
std::string OneLine(pdfsettings::Value const& value);

// Values so, with commas between them.
std::string CommaList(std::span<pdfsettings::Value const> values);

// A line for each difference: "- key value" for a value that is missing afterwards, "+ key value"
// for a new one, "~ key value -> value" for a changed one. With color, the signs are coloured for a
// terminal.
std::string
DifferencesText(pdfsettings::Sequence<pdfsettings::Difference> const& differences, bool color);

} // namespace joboptions
