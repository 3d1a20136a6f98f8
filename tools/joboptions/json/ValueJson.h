// Settings as JSON, without loss.
//
// Booleans and numbers are JSON booleans and numbers, arrays and dictionaries are arrays and
// objects. All other values are strings with a prefix for the kind:
//
//   "/NAME"   a name
//   "u:TEXT"  a string in UTF-8 that needs no escapes; TEXT is its text
//   "b:HEX"   any other string, or the tail of the file; HEX are its raw bytes
//   "x:TEXT"  a hexadecimal string; TEXT is between its brackets
//   "xb:HEX"  a hexadecimal string that is not UTF-8; HEX are the raw bytes between its brackets
//   "n:inf", "n:-inf", "n:nan", "n:-nan"  numbers that JSON cannot represent
//
// A name or key that is not UTF-8, or that begins with a slash itself, is written as a slash and
// the hexadecimal digits of its bytes; with the slash of a name, this gives "//HEX". Nothing else
// has this prefix. Delete and the control characters from U+0080 on are treated as not UTF-8, since
// JSON would not escape them.
#pragma once

#include "pdfsettings/Value.h"

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace joboptions {

// The JSON library recurses for each level.
inline constexpr int kDeepestJsonLevel = 1000;

// value as JSON. file: the name of the input for messages. Throws Failure with Status::kBadInput if
// value is nested deeper than kDeepestJsonLevel.
nlohmann::ordered_json ToJson(pdfsettings::Value const& value, std::string const& file);
nlohmann::ordered_json ToJson(pdfsettings::Dictionary const& dictionary, std::string const& file);

// A name or key for JSON, without the slash before a name.
std::string JsonKey(std::string_view name);

// The text of a document, in which characters that could control a terminal are escaped. A document
// nested deeper than 50 levels is on one line.
std::string JsonText(nlohmann::ordered_json const& document);

// The tail of a file as "b:HEX".
std::string TailJson(std::string_view tail);

// The reverse of JsonKey, the value of a JSON string, and the reverse of TailJson. Nothing for a
// text that these do not write.
std::optional<std::string> KeyFromJson(std::string_view key);
std::optional<pdfsettings::Value> ValueFromJson(std::string_view text);
std::optional<std::string> TailFromJson(std::string_view text);

} // namespace joboptions
