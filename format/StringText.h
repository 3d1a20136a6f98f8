// The text of a string and its form in a settings file. The escapes are those of PostScript: \n \r
// \t \b \f \\ \( \), one to three octal digits, and an escaped line end, which is dropped.
#pragma once

#include <string>
#include <string_view>

namespace format {

// The text of the bytes between the parentheses of a string. Line ends of any form become LF. A
// backslash before any other byte is dropped.
std::string DecodeString(std::string_view raw);

// A form of text that decodes to the same text. It is also safe for readers that look only at the
// two bytes before a parenthesis to decide whether it is escaped.
std::string EncodeString(std::string_view text);

} // namespace format
