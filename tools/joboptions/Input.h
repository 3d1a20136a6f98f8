// Where settings are read from.
#pragma once

#include "pdfsettings/Component.h"
#include "pdfsettings/Settings.h"
#include "pdfsettings/Value.h"

#include <string>
#include <vector>

namespace joboptions {

// How messages name a file: its path with control bytes made visible.
std::string InputName(std::string const& file);

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

// The settings in a file, bound to it; "-" is standard input. schema as in pdfsettings::Settings.
// Throws Failure with Status::kBadInput and the reason when they cannot be read or parsed.
pdfsettings::Settings OpenSettings(
    pdfsettings::Component const& component,
    std::string const& file,
    std::string const& schema = {});

// The same with the bytes that they were read from.
struct SettingsWithText {
    pdfsettings::Settings settings;
    std::string text;
};
SettingsWithText OpenWithText(
    pdfsettings::Component const& component,
    std::string const& file,
    std::string const& schema = {});

// The same as values.
pdfsettings::Dictionary ReadSettings(std::string const& file);

} // namespace joboptions
