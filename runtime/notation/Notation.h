// Reading and writing values as text in the object notation.
//
// A text holds one value: a dictionary of keys and values, between < and >, an array of values,
// between [ and ], a number, or a word or text, both of which are 8-bit strings. A key is a word or
// a text. A word ends at a blank or one of <>[]()%; one that has the form of a number is one. A
// text stands in round brackets, which nest, with the escapes \( \) \\ \n \r \t and \ddd (one to
// three octal digits). A comment goes from % to the end of the line. No locale matters, and nothing
// uses more stack for deeper nesting.
#pragma once

#include "runtime/values/PosCollections.h"

#include <string_view>

namespace bibrt {

// An error in a text and where it lies; the message is cut short if need be.
struct NotationError {
    std::size_t fOffset;
    char fMessage[160];
};

// Line and column of a place, both counted from 1; the column in bytes.
struct NotationPlace {
    unsigned long fLine;
    unsigned long fColumn;
};
NotationPlace PlaceOf(std::string_view text, std::size_t offset) noexcept;

// Whether all of text can stand as a word.
bool IsPlainWord(std::string_view text) noexcept;

// Whether text has the form of a number: a sign, digits with at most one point, an exponent.
bool IsNumber(std::string_view text) noexcept;

// Hears of each value while a text is read, before what lies in it. The value lies in a collection
// that is so deep, 0 for the value of the text itself: its key stands at offset, or itself.
class PlaceListener {
public:
    virtual void OnKey(std::size_t depth, std::string_view key, std::size_t offset) = 0;
    virtual void OnElement(std::size_t depth, std::size_t index, std::size_t offset) = 0;

protected:
    ~PlaceListener() = default;
};

// The value that text holds, unowned. Throws NotationError and std::bad_alloc.
POSObject* ReadNotation(std::string_view text, PlaceListener* listener = nullptr);

// Appends object to out, each value on a line of its own. Reading it gives an equal value, as far
// as the notation has the kinds. The others become a text with a comment that tells the kind:
// 16-bit strings in UTF-8, binary data in hexadecimal digits, numbers that are not finite, objects
// of hosts. False for a value that contains itself. Throws std::bad_alloc.
bool WriteNotation(POSObject& object, String& out);

// Appends a number in the fewest digits that give it back; "inf" or "nan", with a sign, for what is
// not finite. Throws std::bad_alloc.
void AppendDigits(String& out, double value);

} // namespace bibrt
