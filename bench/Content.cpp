#include "bench/Content.h"

#include "bench/Host.h"
#include "pdfsettings/Settings.h"

#include <benchmark/benchmark.h>
#include <fstream>
#include <map>
#include <memory>
#include <plist/plist.h>
#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

namespace bench {

namespace {

using pdfsettings::Array;
using pdfsettings::Dictionary;
using pdfsettings::HexString;
using pdfsettings::Value;

constexpr std::size_t kExampleSize = 10'000;

// Files of this kind describe themselves in many languages, as UTF-16 in hexadecimal digits.
constexpr char const* kLanguages[] = {
    "CHS",
    "CHT",
    "DAN",
    "DEU",
    "ESP",
    "FRA",
    "ITA",
    "JPN",
    "KOR",
    "NLD",
    "NOR",
    "PTB",
    "SUO",
    "SVE"};

std::string TextOf(Dictionary const& values) {
    return pdfsettings::Settings::From(values).CanonicalText();
}

// The example settings with descriptions that bring their text to its size.
Dictionary Example() {
    SharedComponent();
    auto const example = pdfsettings::Settings::Open(BENCH_EXAMPLE);
    Dictionary values = example.Values();
    std::size_t const size = TextOf(values).size();
    Dictionary descriptions;
    std::size_t const digits = (kExampleSize - size) / std::size(kLanguages) / 4 * 4;
    for (char const* const language : kLanguages) {
        std::string text = "FEFF";
        while (text.size() + 20 < digits) {
            text += "0053";
        }
        descriptions.SetKey(language, HexString{text});
    }
    values.SetKey("Description", std::move(descriptions));
    return values;
}

std::size_t CountKeys(Dictionary const& values) {
    std::size_t count = values.size();
    for (auto const& [key, value] : values) {
        auto const nested = value.If<Dictionary>();
        count += nested ? CountKeys(*nested) : 0;
    }
    return count;
}

// Values with suffix behind every key.
Dictionary WithSuffix(Dictionary const& values, std::string const& suffix) {
    Dictionary result;
    for (auto const& [key, value] : values) {
        auto const nested = value.If<Dictionary>();
        result.SetKey(key + suffix, nested ? Value(WithSuffix(*nested, suffix)) : value);
    }
    return result;
}

Dictionary Copies(std::size_t copies, Keys keys) {
    Dictionary const example = Example();
    if (copies == 1) {
        return example;
    }
    Dictionary result;
    for (std::size_t copy = 0; copy < copies; ++copy) {
        std::string const number = std::to_string(copy);
        if (keys == Keys::kFew) {
            result.SetKey("Set" + number, example);
            continue;
        }
        for (auto const& [key, value] : WithSuffix(example, number)) {
            result.SetKey(key, value);
        }
    }
    return result;
}

using JsonWriter = rapidjson::PrettyWriter<rapidjson::StringBuffer>;

void WriteJson(JsonWriter& writer, Value const& value) {
    if (auto const dictionary = value.If<Dictionary>()) {
        writer.StartObject();
        for (auto const& [key, nested] : *dictionary) {
            writer.Key(key.c_str());
            WriteJson(writer, nested);
        }
        writer.EndObject();
    } else if (auto const array = value.If<Array>()) {
        writer.StartArray();
        for (Value const& element : *array) {
            WriteJson(writer, element);
        }
        writer.EndArray();
    } else if (auto const number = value.If<double>()) {
        auto const whole = static_cast<std::int64_t>(*number);
        static_cast<double>(whole) == *number ? writer.Int64(whole) : writer.Double(*number);
    } else if (auto const flag = value.If<bool>()) {
        writer.Bool(*flag);
    } else {
        writer.String(std::string(value.Bytes()).c_str());
    }
}

plist_t MakePlist(Value const& value) {
    if (auto const dictionary = value.If<Dictionary>()) {
        plist_t const node = plist_new_dict();
        for (auto const& [key, nested] : *dictionary) {
            plist_dict_set_item(node, key.c_str(), MakePlist(nested));
        }
        return node;
    }
    if (auto const array = value.If<Array>()) {
        plist_t const node = plist_new_array();
        for (Value const& element : *array) {
            plist_array_append_item(node, MakePlist(element));
        }
        return node;
    }
    if (auto const number = value.If<double>()) {
        return plist_new_real(*number);
    }
    if (auto const flag = value.If<bool>()) {
        return plist_new_bool(*flag ? 1 : 0);
    }
    return plist_new_string(std::string(value.Bytes()).c_str());
}

std::string PlistText(Value const& value) {
    plist_t const root = MakePlist(value);
    char* text = nullptr;
    std::uint32_t size = 0;
    plist_to_xml(root, &text, &size);
    std::string result(text, size);
    plist_to_xml_free(text);
    plist_free(root);
    return result;
}

Content MakeContent(std::size_t copies, Keys keys) {
    Dictionary const values = Copies(copies, keys);
    rapidjson::StringBuffer json;
    JsonWriter writer(json);
    WriteJson(writer, values);
    return {
        TextOf(values),
        std::string(json.GetString(), json.GetSize()),
        PlistText(values),
        CountKeys(values)};
}

} // namespace

Content const& GetContent(std::size_t copies, Keys keys) {
    static std::map<std::pair<std::size_t, Keys>, std::unique_ptr<Content>> contents;
    std::unique_ptr<Content>& content = contents[{copies, keys}];
    if (content == nullptr) {
        content = std::make_unique<Content>(MakeContent(copies, keys));
    }
    return *content;
}

} // namespace bench
