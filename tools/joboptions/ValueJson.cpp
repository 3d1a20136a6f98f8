#include "tools/joboptions/ValueJson.h"

#include "tools/joboptions/Failure.h"
#include "tools/joboptions/Input.h"
#include "tools/joboptions/Utf8.h"
#include "tools/joboptions/ValueText.h"

#include <cmath>
#include <cstdint>
#include <fmt/format.h>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string_view>
#include <variant>

namespace joboptions {

using Json = nlohmann::ordered_json;
using pdfsettings::Array;
using pdfsettings::Dictionary;
using pdfsettings::Value;

namespace {

// The JSON library takes stack for each level when it writes.
constexpr int kDeepestLevel = 1000;

// Up to here every whole double is a whole number of JSON too.
constexpr double kLargestWhole = 9007199254740992.0;

std::string Hex(std::string_view bytes) {
    std::string digits;
    for (char const byte : bytes) {
        fmt::format_to(
            std::back_inserter(digits), "{:02X}", unsigned{static_cast<unsigned char>(byte)});
    }
    return digits;
}

// A name or key as it stands in JSON, without the slash that begins a name.
std::string JsonKey(std::string_view name) {
    if (name.starts_with('/') || !IsPlainText(name)) {
        return "/" + Hex(name);
    }
    return std::string(name);
}

class Converter {
public:
    // file is named in the message about too deep a nesting.
    explicit Converter(std::string const& file) : fFile(file) {}

    Json operator()(pdfsettings::Word const& word) const {
        if (word.text == "true" || word.text == "false") {
            return word.text == "true";
        }
        return "/" + JsonKey(word.text);
    }

    Json operator()(double number) const {
        if (!std::isfinite(number)) {
            return "n:" + NumberText(number);
        }
        bool const isWhole = std::trunc(number) == number && std::abs(number) <= kLargestWhole;
        bool const isNegativeZero = number == 0 && std::signbit(number);
        if (isWhole && !isNegativeZero) {
            return static_cast<std::int64_t>(number);
        }
        return number;
    }

    Json operator()(pdfsettings::String const& string) const {
        bool const isText =
            IsPlainText(string.bytes) && string.bytes.find('\\') == std::string::npos;
        return isText ? "u:" + string.bytes : "b:" + Hex(string.bytes);
    }

    Json operator()(pdfsettings::HexString const& string) const {
        return IsPlainText(string.text) ? "x:" + string.text : "xb:" + Hex(string.text);
    }

    Json operator()(pdfsettings::Binary const& data) const { return "b:" + Hex(data.bytes); }

    // The same as the hexadecimal string that holds this text.
    Json operator()(pdfsettings::Text16 const& text) const {
        std::string const brackets = OneLine(text);
        return "x:" + brackets.substr(1, brackets.size() - 2);
    }

    Json operator()(Array const& array) {
        Enter();
        Json elements = Json::array();
        for (std::size_t index = 0; index < array.Size(); ++index) {
            elements.push_back(std::visit(*this, array[index].Get()));
        }
        --fLevel;
        return elements;
    }

    // Keys of a dictionary differ already: they are added without the library's search for each.
    Json operator()(Dictionary const& dictionary) {
        Enter();
        Json object = Json::object();
        auto& entries = object.get_ref<Json::object_t&>();
        for (std::size_t place = 0; place < dictionary.Size(); ++place) {
            entries.emplace_back(
                JsonKey(dictionary.KeyAt(place)),
                std::visit(*this, dictionary.ValueAt(place).Get()));
        }
        --fLevel;
        return object;
    }

private:
    void Enter() {
        if (++fLevel > kDeepestLevel) {
            throw Failure(
                Status::kBadInput,
                fmt::format(
                    "{}: nested deeper than the {} levels that JSON output takes",
                    InputName(fFile),
                    kDeepestLevel));
        }
    }

    std::string const& fFile;
    int fLevel = 0;
};

} // namespace

std::string JsonDocument(char const* member, Dictionary const& values, std::string const& file) {
    Converter converter(file);
    Json document{{"version", 1}};
    document[member] = converter(values);
    return document.dump(2) + "\n";
}

} // namespace joboptions
