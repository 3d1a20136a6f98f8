#include "tools/joboptions/json/ValueJson.h"

#include "format/NumberText.h"
#include "tools/joboptions/commands/Output.h"
#include "tools/joboptions/text/Utf8.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <fmt/format.h>
#include <iterator>
#include <limits>
#include <nlohmann/json.hpp>

namespace joboptions {

using Json = nlohmann::ordered_json;
using pdfsettings::Array;
using pdfsettings::Dictionary;
using pdfsettings::Kind;
using pdfsettings::Value;

namespace {

// Up to here every integer of a double is exact in JSON too.
constexpr double kLargestWhole = 9007199254740992.0;

std::string Hex(std::string_view bytes) {
    std::string digits;
    for (char const byte : bytes) {
        fmt::format_to(
            std::back_inserter(digits), "{:02X}", unsigned{static_cast<unsigned char>(byte)});
    }
    return digits;
}

std::optional<std::string> FromHex(std::string_view digits) {
    std::string bytes;
    for (std::size_t at = 0; at < digits.size(); at += 2) {
        unsigned byte = 0;
        char const* const end = digits.data() + std::min(at + 2, digits.size());
        auto const [stop, error] = std::from_chars(digits.data() + at, end, byte, 16);
        if (error != std::errc() || stop != digits.data() + at + 2) {
            return std::nullopt;
        }
        bytes.push_back(static_cast<char>(static_cast<unsigned char>(byte)));
    }
    return bytes;
}

// Makes a value of a kind that is constructed from one text.
template <class Text>
std::optional<Value> Made(std::optional<std::string> text) {
    return text ? std::optional<Value>(Text{std::move(*text)}) : std::nullopt;
}

// The numbers that JSON cannot represent.
std::optional<Value> NumberFromName(std::string_view name) {
    for (double const number :
         {std::numeric_limits<double>::infinity(),
          -std::numeric_limits<double>::infinity(),
          std::numeric_limits<double>::quiet_NaN(),
          -std::numeric_limits<double>::quiet_NaN()}) {
        if (format::ExactText(number) == name) {
            return Value(number);
        }
    }
    return std::nullopt;
}

class Converter {
public:
    // file: named in the error for too deep nesting.
    explicit Converter(std::string const& file) : fFile(file) {}

    Json Convert(Value const& value) {
        switch (value.What()) {
        case Kind::kBool:
            return value.As<bool>();
        case Kind::kNumber:
            return OfNumber(value.As<double>());
        case Kind::kName:
            return "/" + JsonKey(value.Bytes());
        case Kind::kString:
            return OfString(value.Bytes());
        case Kind::kHexString:
            return IsPlainText(value.Bytes()) ? "x:" + std::string(value.Bytes())
                                              : "xb:" + Hex(value.Bytes());
        case Kind::kArray:
            return OfArray(value.As<Array>());
        case Kind::kDictionary:
            return Convert(value.As<Dictionary>());
        }
        return {};
    }

    // The keys of a dictionary differ, so they are added without the library's search for each.
    Json Convert(Dictionary const& dictionary) {
        Enter();
        Json object = Json::object();
        auto& entries = object.get_ref<Json::object_t&>();
        for (auto const& [key, value] : dictionary) {
            entries.emplace_back(JsonKey(key), Convert(value));
        }
        --fLevel;
        return object;
    }

private:
    static Json OfNumber(double number) {
        if (!std::isfinite(number)) {
            return "n:" + format::ExactText(number);
        }
        bool const isWhole = std::trunc(number) == number && std::abs(number) <= kLargestWhole;
        bool const isNegativeZero = number == 0 && std::signbit(number);
        if (isWhole && !isNegativeZero) {
            return static_cast<std::int64_t>(number);
        }
        return number;
    }

    static Json OfString(std::string_view raw) {
        bool const isText = IsPlainText(raw) && raw.find('\\') == std::string_view::npos;
        return isText ? "u:" + std::string(raw) : "b:" + Hex(raw);
    }

    Json OfArray(Array const& array) {
        Enter();
        Json elements = Json::array();
        for (Value const& value : array) {
            elements.push_back(Convert(value));
        }
        --fLevel;
        return elements;
    }

    void Enter() {
        if (++fLevel > kDeepestJsonLevel) {
            Fail(
                Status::kBadInput,
                fFile,
                fmt::format(
                    "nested deeper than the {} levels that JSON output takes", kDeepestJsonLevel));
        }
    }

    std::string const& fFile;
    int fLevel = 0;
};

bool IsDeeper(Json const& value, int levels) {
    return value.is_structured() &&
           (levels == 0 || std::ranges::any_of(value, [=](auto const& part) {
                return IsDeeper(part, levels - 1);
            }));
}

} // namespace

Json ToJson(Value const& value, std::string const& file) {
    return Converter(file).Convert(value);
}

Json ToJson(Dictionary const& dictionary, std::string const& file) {
    return Converter(file).Convert(dictionary);
}

std::string TailJson(std::string_view tail) {
    return "b:" + Hex(tail);
}

std::string JsonText(Json const& document) {
    // With deep nesting, indentation would be many times larger than the rest.
    constexpr int kDeepestIndent = 50;
    int const indent = IsDeeper(document, kDeepestIndent) ? -1 : 2;
    auto const replace = Json::error_handler_t::replace;
    return JsonEscapes(document.dump(indent, ' ', /*ensure_ascii=*/false, replace)) + "\n";
}

std::string JsonKey(std::string_view name) {
    if (name.starts_with('/') || !IsPlainText(name)) {
        return "/" + Hex(name);
    }
    return std::string(name);
}

std::optional<std::string> KeyFromJson(std::string_view key) {
    auto name = key.starts_with('/') ? FromHex(key.substr(1)) : std::optional(std::string(key));
    // Names have no zero bytes.
    return name && name->find('\0') == std::string::npos ? name : std::nullopt;
}

std::optional<std::string> TailFromJson(std::string_view text) {
    return text.starts_with("b:") ? FromHex(text.substr(2)) : std::nullopt;
}

std::optional<Value> ValueFromJson(std::string_view text) {
    if (text.starts_with('/')) {
        return Made<pdfsettings::Name>(KeyFromJson(text.substr(1)));
    }
    std::size_t const colon = std::min(text.find(':'), text.size());
    std::string_view const kind = text.substr(0, colon);
    std::string_view const rest = text.substr(std::min(colon + 1, text.size()));
    if (kind == "b") {
        return Made<pdfsettings::RawString>(FromHex(rest));
    }
    if (kind == "xb") {
        return Made<pdfsettings::HexString>(FromHex(rest));
    }
    if (kind == "u" || kind == "x") {
        return kind == "u" ? Value(pdfsettings::RawString{std::string(rest)})
                           : Value(pdfsettings::HexString{std::string(rest)});
    }
    return kind == "n" ? NumberFromName(rest) : std::nullopt;
}

} // namespace joboptions
