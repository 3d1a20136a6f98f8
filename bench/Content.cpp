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
using pdfsettings::Word;

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

// The example settings with descriptions that bring their text to its size.
Dictionary Example() {
    Dictionary values = pdfsettings::Settings::FromFile(SharedComponent(), BENCH_EXAMPLE).Values();
    values.Remove(pdfsettings::kTailKey);
    std::size_t const size =
        pdfsettings::Settings::FromValues(SharedComponent(), values).Text().size();
    Dictionary descriptions;
    std::size_t const digits = (kExampleSize - size) / std::size(kLanguages) / 4 * 4;
    for (char const* const language : kLanguages) {
        std::string text = "FEFF";
        while (text.size() + 20 < digits) {
            text += "0053";
        }
        descriptions.Set(language, HexString{text});
    }
    values.Set("Description", std::move(descriptions));
    return values;
}

std::size_t CountKeys(Dictionary const& values) {
    std::size_t count = values.Size();
    for (std::size_t place = 0; place < values.Size(); ++place) {
        auto const* const nested = values.ValueAt(place).If<Dictionary>();
        count += nested != nullptr ? CountKeys(*nested) : 0;
    }
    return count;
}

// Values with suffix behind every key.
Dictionary WithSuffix(Dictionary const& values, std::string const& suffix) {
    Dictionary result;
    for (std::size_t place = 0; place < values.Size(); ++place) {
        Value const& value = values.ValueAt(place);
        auto const* const nested = value.If<Dictionary>();
        result.Set(
            values.KeyAt(place) + suffix,
            nested != nullptr ? Value(WithSuffix(*nested, suffix)) : value);
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
            result.Set("Set" + number, example);
            continue;
        }
        Dictionary const renamed = WithSuffix(example, number);
        for (std::size_t place = 0; place < renamed.Size(); ++place) {
            result.Set(renamed.KeyAt(place), renamed.ValueAt(place));
        }
    }
    return result;
}

bool IsBoolean(Word const& word) {
    return word.text == "true" || word.text == "false";
}

// What the text of a string of any kind is to the peers.
std::string PeerText(Value const& value) {
    if (auto const* const word = value.If<Word>()) {
        return word->text;
    }
    if (auto const* const string = value.If<pdfsettings::String>()) {
        return string->bytes;
    }
    auto const* const digits = value.If<HexString>();
    return digits != nullptr ? digits->text : "";
}

using JsonWriter = rapidjson::PrettyWriter<rapidjson::StringBuffer>;

void WriteJson(JsonWriter& writer, Value const& value) {
    if (auto const* const dictionary = value.If<Dictionary>()) {
        writer.StartObject();
        for (std::size_t place = 0; place < dictionary->Size(); ++place) {
            writer.Key(dictionary->KeyAt(place).c_str());
            WriteJson(writer, dictionary->ValueAt(place));
        }
        writer.EndObject();
    } else if (auto const* const array = value.If<Array>()) {
        writer.StartArray();
        for (std::size_t index = 0; index < array->Size(); ++index) {
            WriteJson(writer, (*array)[index]);
        }
        writer.EndArray();
    } else if (auto const* const number = value.If<double>()) {
        auto const whole = static_cast<std::int64_t>(*number);
        static_cast<double>(whole) == *number ? writer.Int64(whole) : writer.Double(*number);
    } else if (auto const* const word = value.If<Word>(); word != nullptr && IsBoolean(*word)) {
        writer.Bool(word->text == "true");
    } else {
        writer.String(PeerText(value).c_str());
    }
}

plist_t MakePlist(Value const& value) {
    if (auto const* const dictionary = value.If<Dictionary>()) {
        plist_t const node = plist_new_dict();
        for (std::size_t place = 0; place < dictionary->Size(); ++place) {
            plist_dict_set_item(
                node, dictionary->KeyAt(place).c_str(), MakePlist(dictionary->ValueAt(place)));
        }
        return node;
    }
    if (auto const* const array = value.If<Array>()) {
        plist_t const node = plist_new_array();
        for (std::size_t index = 0; index < array->Size(); ++index) {
            plist_array_append_item(node, MakePlist((*array)[index]));
        }
        return node;
    }
    if (auto const* const number = value.If<double>()) {
        return plist_new_real(*number);
    }
    if (auto const* const word = value.If<Word>(); word != nullptr && IsBoolean(*word)) {
        return plist_new_bool(word->text == "true" ? 1 : 0);
    }
    return plist_new_string(PeerText(value).c_str());
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
        pdfsettings::Settings::FromValues(SharedComponent(), values).Text(),
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
