// Finding listed settings by their names.
#pragma once

#include "tools/joboptions/commands/Options.h"

#include <string>

namespace joboptions {

// The path of the settings that file means: those of that name in the list for the application that
// options name. Without one, for a path with a slash and for "-" it is file itself. Throws Failure
// with Status::kBadInput when no settings are listed under the name.
std::string Locate(std::string const& file, Options const& options);

// The same for settings that are to be changed in their place. Throws Failure with Status::kRefused
// and all reasons when they are listed as read-only, unless options say that the result goes
// elsewhere.
std::string LocateForChange(std::string const& file, Options const& options);

// As Locate, where no component runs.
std::string Locate(std::string const& file, Options const& options);

} // namespace joboptions
