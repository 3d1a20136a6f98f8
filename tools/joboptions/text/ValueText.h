// Values and differences as text for people, with unprintable characters escaped (VisibleText).
#pragma once

#include "pdfsettings/Compare.h"
#include "pdfsettings/Value.h"

#include <span>
#include <string>

namespace joboptions {

// The value in the syntax of a file, on one line.
std::string OneLine(pdfsettings::Value const& value);

// As above, for the value at a path; the tail has no brackets.
std::string OneLine(std::string const& path, pdfsettings::Value const& value);

// Values in this form, separated by commas.
std::string CommaList(std::span<pdfsettings::Value const> values);

// A line for each difference: "- key value" for a removed value, "+ key value" for a new one, "~
// key value -> value" for a changed one. With color, the signs are coloured.
std::string
DifferencesText(pdfsettings::Sequence<pdfsettings::Difference> const& differences, bool color);

} // namespace joboptions
