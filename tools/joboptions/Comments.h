// The comments of a settings file.
#pragma once

#include <string_view>

namespace joboptions {

// Whether text, which parses as job options text, has a comment that its settings do not keep:
// before, between or within the values. What follows the settings is kept whole.
bool HasComments(std::string_view text);

} // namespace joboptions
