// Where settings are read from.
#pragma once

#include "pdfsettings/Component.h"
#include "pdfsettings/Settings.h"
#include "pdfsettings/Value.h"
#include "tools/joboptions/commands/Output.h"

#include <string>
#include <vector>

namespace joboptions {

// How messages name a file: its path with control bytes made visible.
std::string InputName(std::string const& file);

// Throws Failure with that status and "FILE: reason".
[[noreturn]] void Fail(Status status, std::string const& file, std::string const& reason);

// Standard input can be read once. Throws Failure with Status::kWrongCall when more than one of
// files is "-".
void RequireOneStandardInput(std::vector<std::string> const& files);

// All bytes of a file; "-" is standard input. Throws Failure with Status::kBadInput and the reason
// when it cannot be read.
std::string ReadBytes(std::string const& file);

// The settings in text, which comes from file. schema as in pdfsettings::Settings. Throws Failure
// with Status::kBadInput, the place and the reason when they cannot be parsed.
pdfsettings::Settings ParseSettings(
    pdfsettings::Component const& component,
    std::string const& file,
    std::string const& text,
    std::string const& schema = {});

// The values of the settings in a file; "-" is standard input. Throws Failure as the two above.
pdfsettings::Dictionary ReadSettings(std::string const& file);

} // namespace joboptions
