// The texts in the messages of validators: what a value is, and the path to it.
#pragma once

#include "runtime/values/PosCollections.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>

namespace bibrt {

// What schemas tell apart. Binary data is a string of a settings file by the name of its type.
// Invalid containers are kOther: nobody knows what they lack.
enum class ValueKind { kBoolean, kNumber, kName, kString, kHexString, kArray, kDictionary, kOther };
ValueKind KindOf(POSObject const& value) noexcept;

// The bytes of a value that is a name, a boolean or a string of a settings file; empty for others.
std::string_view BytesOf(POSObject const& value) noexcept;

// The number that a value is. REQUIRES: it is one.
inline double NumberOf(POSObject const& value) noexcept {
    return static_cast<POSNumber const&>(value).fValue;
}

// The texts in one. This and all below throw std::bad_alloc.
String Join(std::initializer_list<std::string_view> texts);

// A number as a person writes it: a value of single precision has no more digits than that.
String NumberText(double value);

// Text in printable ASCII, cut short if need be.
String ShownText(std::string_view text);

// The value as "the number 3", "the string (text)" or "an array".
String FoundText(POSObject const& value);

// What stands around a text of a kind in a settings file.
struct Marks {
    std::string_view fBefore;
    std::string_view fAfter;
};

// The values of array, and value, as they stand in a list of allowed ones; texts between marks.
String ListText(POSArray const& array, Marks marks);
String ListedText(POSObject const& value, Marks marks);

// The most bytes of a path that a message shows.
inline constexpr std::size_t kMaxPathLength = 1000;

// The end of a path, or of a part of it, that is enough to show it; longer than the above when it
// has to be cut.
inline std::string_view PathEnd(std::string_view text) noexcept {
    std::size_t const length = std::min(text.size(), kMaxPathLength + 1);
    return text.substr(text.size() - length);
}

// What a byte of a key becomes in a path.
inline char PathByte(char c) noexcept {
    return static_cast<unsigned char>(c) <= ' ' || c == 0x7F ? '_' : c;
}

// A key as a step of a path: an empty one would leave no trace.
inline std::string_view ShownKey(std::string_view key) noexcept {
    return key.empty() ? "_" : key;
}

// Append a step to path.
void AppendKeyStep(String& path, std::string_view key);
void AppendIndexStep(String& path, std::size_t index);

// Path, a space, text; of a long path only the end, behind "...".
String MessageText(std::string_view path, std::string_view text);

} // namespace bibrt
