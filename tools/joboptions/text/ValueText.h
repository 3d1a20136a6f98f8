// Values in the syntax of a settings file.
#pragma once

#include "pdfsettings/Value.h"

#include <string>

namespace joboptions {

// The value on one line, with everything unprintable made visible (VisibleText): /name, true,
// (string), <hexadecimal string>, [ array ], << /key value >>. Other binary data stands as its
// bytes, since the tail of a file has no brackets of its own; a 16-bit text as a hexadecimal
// string.
std::string OneLine(pdfsettings::Value const& value);

// A number in its shortest form that reads back as the same number.
std::string NumberText(double number);

} // namespace joboptions
