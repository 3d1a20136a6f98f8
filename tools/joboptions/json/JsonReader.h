// Reading the JSON that the tool writes.
#pragma once

#include "pdfsettings/Value.h"

#include <string>

namespace joboptions {

// The values under member in a JSON document of version 1, in the forms that ValueJson.h describes;
// other members are passed over. file is the input that messages name. Throws Failure with
// Status::kBadInput, and the place, for a text that is no JSON, for another version, for a key that
// comes twice and for a value of no known form.
pdfsettings::Dictionary
ReadJsonDocument(char const* member, std::string const& text, std::string const& file);

} // namespace joboptions
