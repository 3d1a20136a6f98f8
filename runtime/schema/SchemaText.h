// The texts in validators' messages: descriptions of values, and paths.
#pragma once

#include "runtime/values/PosCollections.h"

#include <algorithm>
#include <initializer_list>
#include <string>
#include <string_view>

namespace bibrt {

// The kinds that schemas distinguish. Binary data is a string of a settings file; the name of its
// type says which. An invalid container is kOther: its contents are incomplete.
enum class ValueKind { kBoolean, kNumber, kName, kString, kHexString, kArray, kDictionary, kOther };
ValueKind KindOf(POSObject const& value) noexcept;

// The bytes of a name, boolean or string of a settings file; empty for other values.
std::string_view BytesOf(POSObject const& value) noexcept;

// The value of a number. REQUIRES: value is a number.
inline double NumberOf(POSObject const& value) noexcept {
    return static_cast<POSNumber const&>(value).fValue;
}

// Concatenates texts. This function and the following ones throw std::bad_alloc.
String Join(std::initializer_list<std::string_view> texts);

// A number for a message: a value in single precision gets no more digits than single precision
// has.
String NumberText(double value);

// Text in printable ASCII, truncated if it is longer than most bytes.
inline constexpr std::size_t kMaxShown = 60;
String ShownText(std::string_view text, std::size_t most = kMaxShown);

// A description: "the number 3", "the string (text)" or "an array".
String FoundText(POSObject const& value);

// The delimiters of a kind of text in a settings file.
struct Marks {
    std::string_view fBefore;
    std::string_view fAfter;
};

// The values of array, and one value, as in a list of allowed values; texts with their delimiters.
String ListText(POSArray const& array, Marks marks);
String ListedText(POSObject const& value, Marks marks);

// The maximum length of a path in a message, in bytes.
inline constexpr std::size_t kMaxPathLength = 1000;

// The end of a path, or of a part of it, as far as messages show it; longer than kMaxPathLength if
// the path is, so that MessageText can see that it must be cut.
inline std::string_view PathEnd(std::string_view text) noexcept {
    std::size_t const length = std::min(text.size(), kMaxPathLength + 1);
    return text.substr(text.size() - length);
}

// The byte of a path for a byte of a key.
inline char PathByte(char c) noexcept {
    return static_cast<unsigned char>(c) <= ' ' || c == 0x7F ? '_' : c;
}

// A key as a step of a path. An empty key is shown as "_".
inline std::string_view ShownKey(std::string_view key) noexcept {
    return key.empty() ? "_" : key;
}

// Append a step to path.
void AppendKeyStep(String& path, std::string_view key);
void AppendIndexStep(String& path, std::size_t index);

// Appends a step to a path, and removes it at the end of its scope.
class PathStep {
public:
    PathStep(String& path, std::string_view key) : fPath(path), fLength(path.size()) {
        AppendKeyStep(path, key);
    }
    PathStep(PathStep const&) = delete;
    PathStep& operator=(PathStep const&) = delete;
    ~PathStep() { fPath.resize(fLength); }

private:
    String& fPath;
    std::size_t fLength;
};

// Calls visit(element) for each element of array, with its index appended to path.
template <class Visit>
void ForEachElement(POSObject const& array, String& path, Visit visit) {
    std::size_t position = 0;
    for (Ref<POSObject> const& element : static_cast<POSArray const&>(array).fItems) {
        PathStep const step(path, std::to_string(position++));
        visit(*element);
    }
}

// "PATH TEXT"; only the end of a long path, after "...".
String MessageText(std::string_view path, std::string_view text);

} // namespace bibrt
