// Where settings are read from.
#pragma once

#include "host/Value.h"

#include <string>

namespace joboptions {

// How messages name a file: its path with control bytes made visible.
std::string InputName(std::string const& file);

// The settings in a file; "-" is standard input. Throws Failure with Status::kBadInput and the
// reason when it cannot be read or parsed.
pdfsettings::Dictionary ReadSettings(std::string const& file);

} // namespace joboptions
