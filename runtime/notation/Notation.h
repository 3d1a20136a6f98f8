// Reading and writing values as text in the object notation, see NotationScanner.h for its tokens.
//
// A text holds one value: a dictionary of keys and values, an array of values, a number, or a word
// or text in brackets, both of which are 8-bit strings. A key is a word or a text. A word that has
// the form of a number is one. No locale matters, and nothing uses more stack for deeper nesting.
#pragma once

#include "runtime/notation/NotationScanner.h"
#include "runtime/values/PosCollections.h"

#include <string_view>

namespace bibrt {

// Hears of each value while a text is read, before what lies in it. The value lies in a collection
// that is so deep, 0 for the value of the text itself: its key stands at offset, or itself.
class PlaceListener {
public:
    virtual void OnKey(std::size_t depth, std::string_view key, std::size_t offset) = 0;
    virtual void OnElement(std::size_t depth, std::size_t index, std::size_t offset) = 0;

protected:
    ~PlaceListener() = default;
};

// The value that text holds, unowned. Throws NotationFault and std::bad_alloc.
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
