// Reading and writing values in the object notation.
//
// A text has one value: a dictionary of keys and values between < and >, an array of values between
// [ and ], a number, or a string. A string is a word or a quoted text; both are 8-bit strings. A
// key is a string. A word ends at a blank or one of <>[]()%; a word with the form of a number is a
// number. A quoted text is in parentheses, which nest, with the escapes \( \) \\ \n \r \t and \ddd
// (one to three octal digits). A comment runs from % to the end of the line. The notation does not
// depend on the locale. Reading and writing use no more stack for deeper nesting.
#pragma once

#include "runtime/values/PosCollections.h"

#include <string_view>

namespace bibrt {

// An error in a text and its offset in bytes. A long message is truncated.
struct NotationError {
    std::size_t fOffset;
    char fMessage[160];
};

// The line and column of an offset, both from 1; the column counts bytes.
struct NotationPlace {
    unsigned long fLine;
    unsigned long fColumn;
};
NotationPlace PlaceOf(std::string_view text, std::size_t offset) noexcept;

// Whether text can be written as a single word.
bool IsPlainWord(std::string_view text) noexcept;

// Whether text has the form of a number: an optional sign, digits with at most one point, an
// optional exponent.
bool IsNumber(std::string_view text) noexcept;

// Gets the position of each value while a text is read, before the values inside it. depth is the
// number of collections around the value, 0 for the root. offset is the position of the value's
// key, or of the value itself if it has none.
class PlaceListener {
public:
    virtual void OnKey(std::size_t depth, std::string_view key, std::size_t offset) = 0;
    virtual void OnElement(std::size_t depth, std::size_t index, std::size_t offset) = 0;

protected:
    ~PlaceListener() = default;
};

// The value that text describes, unowned. listener may be null. Throws NotationError and
// std::bad_alloc.
POSObject* ReadNotation(std::string_view text, PlaceListener* listener = nullptr);

// Appends object to out, each value on its own line. Reading the text returns an equal value, if
// the notation has all its kinds. Values of other kinds are written as a string with a comment that
// names the kind: 16-bit strings in UTF-8, binary data in hexadecimal digits, numbers that are not
// finite, objects of hosts. False for a value that contains itself. Throws std::bad_alloc.
bool WriteNotation(POSObject& object, String& out);

// Appends a number in the fewest digits that read back as the same number; "inf" or "nan", with a
// sign, for a number that is not finite. Throws std::bad_alloc.
void AppendDigits(String& out, double value);

} // namespace bibrt
