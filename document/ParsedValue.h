// Reading a single value.
#pragma once

#include "pdfsettings/Value.h"

#include <string>
#include <string_view>

namespace pdfsettings::detail {

struct ParsedValue {
    Value fValue;
    std::string fText; // without surrounding blanks and comments
};

// Reads one value, as Value::Parse. The error has an id if text begins with a value that is read
// otherwise than it looks.
ParsedValue ParseValue(std::string_view text);

// Whether value reads back from text as the value of a setting.
bool HasForm(Value const& value, std::string const& text);

// Why a value whose text has no form cannot be stored.
std::string NoFormMessage(std::string const& text);

} // namespace pdfsettings::detail
