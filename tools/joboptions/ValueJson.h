// Settings as JSON, without loss.
//
// Booleans and numbers stand as such, arrays and dictionaries as arrays and objects. All other
// values are strings whose beginning tells the kind:
//
//   "/NAME"   a name
//   "u:TEXT"  a string whose bytes are UTF-8 and need no escapes; TEXT is what it says
//   "b:HEX"   any other string, or the tail of the file: HEX are the raw bytes
//   "x:TEXT"  a hexadecimal string, TEXT as it stands between the brackets
//   "xb:HEX"  one whose text is no UTF-8: HEX are the raw bytes between the brackets
//   "n:inf", "n:-inf", "n:nan", "n:-nan"  numbers that JSON has no form for
//
// A name or a key that is no UTF-8, and one that begins with a slash itself, is a slash and the
// hexadecimal digits of its bytes; behind the slash of a name this gives "//HEX". Nothing else
// begins so. Delete and the controls from U+0080 on count as no UTF-8 here: JSON would let them
// through.
#pragma once

#include "host/Value.h"

#include <string>

namespace joboptions {

// A document for programs: its version and, under member, the values. file is the
// input that they come from. Throws Failure with Status::kBadInput when they are nested deeper than
// 1,000 levels.
std::string
JsonDocument(char const* member, pdfsettings::Dictionary const& values, std::string const& file);

} // namespace joboptions
