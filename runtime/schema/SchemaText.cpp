#include "runtime/schema/SchemaText.h"

#include "runtime/notation/Notation.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace bibrt {

namespace {

constexpr std::string_view kStringTypeName = "JoboptionsString";
constexpr std::string_view kHexStringTypeName = "JoboptionsUnicodeString";
constexpr std::string_view kCut = "...";

constexpr std::size_t kMaxListLength = 500;

ValueKind KindOfBinData(std::string_view typeName) noexcept {
    if (typeName == kStringTypeName) {
        return ValueKind::kString;
    }
    return typeName == kHexStringTypeName ? ValueKind::kHexString : ValueKind::kOther;
}

ValueKind KindOfWord(std::string_view word) noexcept {
    return word == "true" || word == "false" ? ValueKind::kBoolean : ValueKind::kName;
}

bool IsSinglePrecision(double value) noexcept {
    return std::abs(value) <= std::numeric_limits<float>::max() &&
           static_cast<double>(static_cast<float>(value)) == value;
}

} // namespace

ValueKind KindOf(POSObject const& value) noexcept {
    if (value.fIsInvalid) {
        return ValueKind::kOther;
    }
    if (IsOfType(&value, gNumberType)) {
        return ValueKind::kNumber;
    }
    if (IsOfType(&value, gStringType)) {
        return KindOfWord(BytesOf(value));
    }
    if (IsOfType(&value, gBinDataType)) {
        return KindOfBinData(static_cast<POSBinData const&>(value).TypeName());
    }
    if (IsCollection(&value)) {
        return IsOfType(&value, gArrayType) ? ValueKind::kArray : ValueKind::kDictionary;
    }
    return ValueKind::kOther;
}

std::string_view BytesOf(POSObject const& value) noexcept {
    if (IsOfType(&value, gStringType)) {
        return static_cast<POSString const&>(value).View();
    }
    if (IsOfType(&value, gBinDataType)) {
        auto const& data = static_cast<POSBinData const&>(value);
        return {reinterpret_cast<char const*>(data.Data()), data.fSize};
    }
    return {};
}

String Join(std::initializer_list<std::string_view> texts) {
    String result;
    for (std::string_view const text : texts) {
        result.append(text);
    }
    return result;
}

String NumberText(double value) {
    String text;
    if (!IsSinglePrecision(value) || value == std::trunc(value)) {
        AppendDigits(text, value);
        return text;
    }
    char digits[64];
    char* const last =
        std::to_chars(digits, digits + sizeof(digits), static_cast<float>(value)).ptr;
    text.append(digits, last);
    return text;
}

String ShownText(std::string_view text, std::size_t most) {
    String shown(text.substr(0, most));
    std::replace_if(
        shown.begin(), shown.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return text.size() > most ? shown.append(kCut) : shown;
}

String FoundText(POSObject const& value) {
    switch (KindOf(value)) {
    case ValueKind::kBoolean:
        return Join({"the boolean ", BytesOf(value)});
    case ValueKind::kNumber:
        return Join({"the number ", NumberText(NumberOf(value))});
    case ValueKind::kName:
        return Join({"the name ", ShownText(BytesOf(value))});
    case ValueKind::kString:
        return Join({"the string (", ShownText(BytesOf(value)), ")"});
    case ValueKind::kHexString:
        return Join({"the hexadecimal string <", ShownText(BytesOf(value)), ">"});
    case ValueKind::kArray:
        return Join({"an array"});
    case ValueKind::kDictionary:
        return Join({"a dictionary"});
    case ValueKind::kOther:
        break;
    }
    return Join({"another kind of value"});
}

String ListedText(POSObject const& value, Marks marks) {
    return KindOf(value) == ValueKind::kNumber
               ? NumberText(NumberOf(value))
               : Join({marks.fBefore, ShownText(BytesOf(value)), marks.fAfter});
}

String ListText(POSArray const& array, Marks marks) {
    String list;
    for (POSObject const* const item : array.fItems) {
        list.append(list.empty() ? "" : ", ");
        if (list.size() > kMaxListLength) {
            return list.append(kCut);
        }
        list.append(ListedText(*item, marks));
    }
    return list;
}

void AppendKeyStep(String& path, std::string_view key) {
    path.append(path.empty() ? "" : "/");
    for (char const c : PathEnd(ShownKey(key))) {
        path.push_back(PathByte(c));
    }
}

void AppendIndexStep(String& path, std::size_t index) {
    char digits[24];
    char* const last = std::to_chars(digits, digits + sizeof(digits), index).ptr;
    path.append(path.empty() ? "" : "/").append(digits, last);
}

String MessageText(std::string_view path, std::string_view text) {
    if (path.size() > kMaxPathLength) {
        return Join({kCut, path.substr(path.size() - kMaxPathLength), " ", text});
    }
    return Join({path, " ", text});
}

} // namespace bibrt
