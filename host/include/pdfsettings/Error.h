// The one exception of the host API.
#pragma once

#include "pdfsettings/Export.h"

#include <stdexcept>

namespace pdfsettings {

// What went wrong, in words. Where the component reported a reason, what() is the reported text.
class PDFSETTINGS_API Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace pdfsettings
