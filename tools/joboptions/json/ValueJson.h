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

#include "pdfsettings/Value.h"

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace joboptions {

// The JSON library takes stack for each level.
inline constexpr int kDeepestJsonLevel = 1000;

// value as JSON; file is the input that messages name. Throws Failure with Status::kBadInput when
// it is nested deeper than kDeepestJsonLevel.
nlohmann::ordered_json ToJson(pdfsettings::Value const& value, std::string const& file);
nlohmann::ordered_json ToJson(pdfsettings::Dictionary const& dictionary, std::string const& file);

// A name or key as it stands in JSON, without the slash that begins a name.
std::string JsonKey(std::string_view name);

// A document as commands write it, which says nothing that a terminal must not see. One that is
// nested deeper than 50 levels stands in one line.
std::string JsonText(nlohmann::ordered_json const& document);

// The tail of a file, "b:HEX".
std::string TailJson(std::string_view tail);

// The key that JsonKey wrote, the value that the text of a JSON string stands for, and the tail.
// None for a text that was not written so.
std::optional<std::string> KeyFromJson(std::string_view key);
std::optional<pdfsettings::Value> ValueFromJson(std::string_view text);
std::optional<std::string> TailFromJson(std::string_view text);

} // namespace joboptions
