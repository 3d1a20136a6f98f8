// Finding listed settings by name.
#pragma once

#include "tools/joboptions/commands/Options.h"

#include <string>

namespace joboptions {

// The path of the settings that file means: with an application in options, the settings of that
// name in its list. Without an application, for a path with a slash and for "-", file itself.
// Throws Failure with Status::kBadInput if no settings of that name are listed.
std::string Locate(std::string const& file, Options const& options);

// As above, for settings that will be changed in place. Throws Failure with Status::kRefused and
// all reasons if they are listed as read-only, unless options name another output.
std::string LocateForChange(std::string const& file, Options const& options);

} // namespace joboptions
