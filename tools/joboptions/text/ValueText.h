// Values in the syntax of a settings file, and what kind they are of.
#pragma once

#include "pdfsettings/Value.h"

#include <string>
#include <vector>

namespace joboptions {

// The value on one line, with everything unprintable made visible (VisibleText): /name, true,
// (string), <hexadecimal string>, [ array ], << /key value >>. Other binary data stands as its
// bytes, since the tail of a file has no brackets of its own; a 16-bit text as a hexadecimal
// string.
std::string OneLine(pdfsettings::Value const& value);

// Values so, with commas between them.
std::string CommaList(std::vector<pdfsettings::Value> const& values);

// A number in its shortest form that reads back as the same number.
std::string NumberText(double number);

// value if there is one of that kind, else null.
template <class Kind>
Kind const* As(pdfsettings::Value const* value) {
    return value == nullptr ? nullptr : value->If<Kind>();
}

// Whether value is an array or a dictionary.
bool IsCollection(pdfsettings::Value const& value);

} // namespace joboptions
