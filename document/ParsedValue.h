// Reading a single value.
#pragma once

#include "pdfsettings/Value.h"

#include <string>
#include <string_view>

namespace pdfsettings::detail {

struct ParsedValue {
    Value fValue;
    std::string fText; // without the blanks and comments around it
};

// As Value::Parse. The error has an id where there is a value, which is read otherwise than it
// looks.
ParsedValue ParseValue(std::string_view text);

} // namespace pdfsettings::detail
