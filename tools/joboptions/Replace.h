// Putting changed settings in the place of the file that they come from.
#pragma once

#include "pdfsettings/Settings.h"
#include "tools/joboptions/Options.h"

#include <string>

namespace joboptions {

// Writes text where options say, else over file, which settings come from; "-" is standard output.
// A file is replaced whole or not at all. Throws Failure with Status::kRefused when file would be
// replaced though somebody else changed it since it was read, unless options say force, and as
// WriteFile.
void Replace(
    std::string const& file,
    pdfsettings::Settings const& settings,
    std::string const& text,
    Options const& options);

// Throws Failure with Status::kRefused when Replace would do so for a read-only file.
void RequireReplaceable(std::string const& file, Options const& options);

// Throws Failure with Status::kWrongCall when standard output would have to take both JSON and the
// settings.
void RequireRoom(std::string const& file, Options const& options);

} // namespace joboptions
