// The text of a string and its form in a settings file. The escapes are those of PostScript
// strings: \n \r \t \b \f \\ \( \), one to three octal digits, and a line end, which is dropped.
#pragma once

#include <string>
#include <string_view>

namespace format {

// What stands between the parentheses of a string, with its escapes resolved. A line end is LF, in
// whatever form it stands there; before any other byte the backslash is dropped.
std::string DecodeString(std::string_view raw);

// A form of text that reads back as the same, also where only the two bytes before a parenthesis
// say whether it is escaped.
std::string EncodeString(std::string_view text);

} // namespace format
