// The component's layout of settings.
#pragma once

#include "pdfsettings/Component.h"
#include "pdfsettings/Settings.h"

#include <optional>
#include <string>

namespace joboptions {

// The text that the component writes of settings once it is at rest: reading and writing it again
// gives the same text. A number can need a second turn, since one that is rounded to a whole number
// is written as such from then on. Throws Failure with Status::kRefused, in which file is named,
// when reading the text would not give the settings back, apart from rounded numbers.
std::string LayOut(
    pdfsettings::Component const& component,
    pdfsettings::Settings const& settings,
    std::string const& file);

// A setting that alone makes what is written unreadable, if there is one.
std::optional<std::string>
UnwritableKey(pdfsettings::Component const& component, pdfsettings::Dictionary const& values);

} // namespace joboptions
