// Where settings are read from.
#pragma once

#include "host/Component.h"
#include "host/Settings.h"
#include "host/Value.h"

#include <string>

namespace joboptions {

// How messages name a file: its path with control bytes made visible.
std::string InputName(std::string const& file);

// All bytes of a file; "-" is standard input. Throws Failure with Status::kBadInput and the reason
// when it cannot be read.
std::string ReadBytes(std::string const& file);

// The settings in text, which comes from file. Throws Failure with Status::kBadInput and the reason
// when it cannot be parsed. schema as in pdfsettings::Settings.
pdfsettings::Settings ParseSettings(
    pdfsettings::Component const& component,
    std::string const& file,
    std::string const& text,
    std::string const& schema = {});

// The settings in a file; "-" is standard input. Throws Failure with Status::kBadInput and the
// reason when it cannot be read or parsed.
pdfsettings::Dictionary ReadSettings(std::string const& file);

} // namespace joboptions
