// What changes between two texts, line by line.
#pragma once

#include <string>
#include <string_view>

namespace joboptions {

// The lines of before that are not in after (-) and the other way round (+), with three lines
// around them, in the form of a unified diff; empty for equal texts. Bytes that are not printable
// are shown as VisibleText does, and so are the carriage returns of line ends if the texts have
// different line ends. The lines of long texts may be shown as changed although they have only
// moved.
std::string
LineDiff(std::string const& name, std::string_view before, std::string_view after, bool color);

} // namespace joboptions
