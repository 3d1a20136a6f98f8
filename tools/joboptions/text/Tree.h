// Settings as a tree for people.
#pragma once

#include "pdfsettings/Value.h"

#include <string>

namespace joboptions {

// All settings, a line for each in file order. The keys of a dictionary are padded to one width.
// What is nested stands below its key, indented, with positions in place of keys for an array; a
// short array of scalars stays on the line of its key. What follows the settings in their file
// comes last under a heading. With color, keys are coloured for a terminal.
std::string TreeText(pdfsettings::Dictionary const& settings, bool color);

} // namespace joboptions
