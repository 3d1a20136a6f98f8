// Keys that a file does not have.
#pragma once

#include "pdfsettings/Value.h"

#include <string>

namespace joboptions {

// "no such key: KEY", with the key of settings that is probably meant.
std::string MissingKeyText(pdfsettings::Dictionary const& settings, std::string const& key);

} // namespace joboptions
