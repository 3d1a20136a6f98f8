#include "tools/joboptions/json/JsonDocuments.h"

#include "tools/joboptions/commands/Output.h"
#include "tools/joboptions/json/ValueJson.h"
#include "tools/joboptions/text/Utf8.h"
#include "tools/joboptions/text/ValueText.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace joboptions {

using Json = nlohmann::ordered_json;
using pdfsettings::Array;
using pdfsettings::Dictionary;
using pdfsettings::Finding;
using pdfsettings::SettingRule;
using pdfsettings::Value;

namespace {

Json ValueOrNull(Value const* value, std::string const& file) {
    return value == nullptr ? Json() : ToJson(*value, file);
}

// Texts come from files and may hold any byte.
Json TextOrNull(std::string const& text) {
    return text.empty() ? Json() : Json(WellFormedText(text));
}

// What make gives for each item.
template <class Item, class Make>
Json List(std::vector<Item> const& items, Make make) {
    Json list = Json::array();
    for (Item const& item : items) {
        list.push_back(make(item));
    }
    return list;
}

Json DifferencesJson(std::vector<Difference> const& differences, std::string const& file) {
    return List(differences, [&file](Difference const& difference) {
        return Json{
            {"key", JsonKey(difference.path)},
            {"before", ValueOrNull(difference.before, file)},
            {"after", ValueOrNull(difference.after, file)}};
    });
}

Json FindingsJson(std::vector<Finding> const& findings) {
    return List(findings, [](Finding const& finding) {
        return Json{
            {"key", WellFormedText(finding.key)}, {"message", WellFormedText(finding.message)}};
    });
}

Json PlacedFindingJson(PlacedFinding const& finding) {
    bool const isError = finding.severity == pdfsettings::Severity::kError;
    return {
        {"line", finding.place.line},
        {"column", finding.place.column},
        {"length", finding.span.Size()},
        {"severity", isError ? "error" : "warning"},
        {"id", finding.id},
        {"key", TextOrNull(finding.key)},
        {"message", WellFormedText(finding.message)}};
}

void AddNumber(Json& object, char const* name, std::optional<double> const& number) {
    if (number) {
        object[name] = ToJson(*number, "");
    }
}

Json RuleJson(SettingRule const& rule, std::string const& file) {
    Json object{{"key", rule.key}, {"required", rule.isRequired}, {"kind", rule.kind}};
    if (!rule.element.empty()) {
        object["of"] = rule.element;
    }
    AddNumber(object, "count", rule.count);
    AddNumber(object, "min", rule.least);
    AddNumber(object, "max", rule.greatest);
    for (Value const& value : rule.allowed) {
        object["in"].push_back(ToJson(value, file));
    }
    if (rule.standard) {
        object["default"] = ToJson(*rule.standard, file);
    }
    object["doc"] = rule.help;
    return object;
}

} // namespace

std::string JsonDocument(char const* member, Dictionary const& values, std::string const& file) {
    return JsonText({{"version", 1}, {member, ToJson(values, file)}});
}

std::string
DifferencesDocument(std::vector<Difference> const& differences, std::string const& file) {
    return JsonText({{"version", 1}, {"differences", DifferencesJson(differences, file)}});
}

std::string ChangeDocument(
    std::vector<Difference> const& differences,
    std::vector<Finding> const& findings,
    std::vector<Finding> const& warnings,
    std::string const& file) {
    return JsonText(
        {{"version", 1},
         {"differences", DifferencesJson(differences, file)},
         {"findings", FindingsJson(findings)},
         {"warnings", FindingsJson(warnings)}});
}

std::string CheckDocument(std::vector<Judgement> const& judgements) {
    auto files = List(judgements, [](Judgement const& judgement) {
        return Json{
            {"file", WellFormedText(judgement.file)},
            {"error", TextOrNull(judgement.error)},
            {"findings", List(judgement.findings, &PlacedFindingJson)}};
    });
    return JsonText({{"version", 1}, {"files", std::move(files)}});
}

std::string LayoutDocument(std::vector<LayoutJudgement> const& judgements) {
    auto files = List(judgements, [](LayoutJudgement const& judgement) {
        return Json{
            {"file", WellFormedText(judgement.file)},
            {"error", TextOrNull(judgement.error)},
            {"differs", judgement.differs}};
    });
    return JsonText({{"version", 1}, {"files", std::move(files)}});
}

std::string RulesDocument(std::vector<SettingRule> const& rules, std::string const& file) {
    auto settings = List(rules, [&file](SettingRule const& rule) { return RuleJson(rule, file); });
    return JsonText({{"version", 1}, {"settings", std::move(settings)}});
}

namespace {

// As much of an input as a message repeats, made visible.
std::string Quoted(std::string const& text) {
    constexpr std::size_t kMost = 300;
    return VisibleText(text.substr(0, kMost)) + (text.size() > kMost ? "..." : "");
}

// Builds values while the JSON library reads. It keeps an own list of what is open, so that no
// nesting is too deep, and sees every key, also one that comes twice.
class Builder {
public:
    // Reads text, and judges what stands under member. Throws Failure.
    Builder(std::string const& text, std::string const& file, std::string_view member)
        : fFile(file),
          fMember(member) {
        Json::sax_parse(text, this);
    }

    Value const& Root() const { return fRoot; }

    // What the library calls. NOLINTBEGIN(readability-identifier-naming)
    bool null() {
        RefuseInMember("null is no value of a setting");
        return Store(Value());
    }
    bool boolean(bool value) { return Store(pdfsettings::Word{value ? "true" : "false"}); }
    bool number_integer(Json::number_integer_t number) {
        return Store(static_cast<double>(number));
    }
    bool number_unsigned(Json::number_unsigned_t number) {
        return Store(static_cast<double>(number));
    }
    bool number_float(Json::number_float_t number, std::string const& /*digits*/) {
        return Store(number);
    }
    bool string(std::string& text) {
        bool const isTail = fOpen.size() == 2 && fOpen.back().fKey == pdfsettings::kTailKey;
        auto value = ValueFromJson(text, isTail);
        if (!value) {
            RefuseInMember(fmt::format(
                "\"{}\" stands for no value: expected \"/NAME\", \"u:TEXT\", \"b:HEX\", "
                "\"x:TEXT\", \"xb:HEX\" or \"n:inf\"",
                Quoted(text)));
        }
        return Store(value ? std::move(*value) : Value());
    }
    bool binary(Json::binary_t& /*bytes*/) { return null(); }
    bool start_object(std::size_t /*size*/) { return Open(Dictionary()); }
    bool start_array(std::size_t /*size*/) { return Open(Array()); }
    bool end_object() { return Close(); }
    bool end_array() { return Close(); }
    bool key(std::string& text) {
        OpenValue& open = fOpen.back();
        auto key = KeyFromJson(text);
        if (!key) {
            open.fKey.clear();
            RefuseInMember(fmt::format("\"{}\" stands for no key", Quoted(text)));
        }
        open.fKey = key ? std::move(*key) : text;
        if (open.fValue.If<Dictionary>()->Get(open.fKey) != nullptr) {
            RefuseInMember("the key comes twice");
        }
        return true;
    }
    bool parse_error(
        std::size_t /*offset*/, std::string const& /*token*/, Json::exception const& error) {
        // The library's words begin with its own name and number.
        std::string const words = error.what();
        std::size_t const name = words.find("] ");
        Fail(
            Status::kBadInput,
            fFile,
            Quoted(name == std::string::npos ? words : words.substr(name + 2)));
    }
    // NOLINTEND(readability-identifier-naming)

private:
    struct OpenValue {
        Value fValue;
        std::string fKey; // the last one of a dictionary
    };

    [[noreturn]] void Refuse(std::string const& reason) const {
        std::string const place = Place();
        Fail(Status::kBadInput, fFile, VisibleText(place) + (place.empty() ? "" : ": ") + reason);
    }

    // What stands elsewhere in the document is passed over.
    void RefuseInMember(std::string const& reason) const {
        if (!fOpen.empty() && fOpen.front().fKey == fMember) {
            Refuse(reason);
        }
    }

    // The path of what is being read; of a deep one the beginning.
    std::string Place() const {
        std::string path;
        for (std::size_t level = 0; level < fOpen.size(); ++level) {
            auto const& [value, key] = fOpen[level];
            auto const* const array = value.If<Array>();
            std::string const part = array == nullptr ? key : std::to_string(array->Size());
            if (level == kShownLevels) {
                return path + "/...";
            }
            path += (path.empty() || part.empty() ? "" : "/") + part;
        }
        return path;
    }

    bool Open(Value collection) {
        if (fOpen.size() > kDeepestJsonLevel) {
            Refuse(fmt::format("nested deeper than {} levels", kDeepestJsonLevel));
        }
        fOpen.push_back({std::move(collection), {}});
        return true;
    }

    bool Close() {
        Value closed = std::move(fOpen.back().fValue);
        fOpen.pop_back();
        return Store(std::move(closed));
    }

    bool Store(Value value) {
        if (fOpen.empty()) {
            fRoot = std::move(value);
        } else if (auto* const array = fOpen.back().fValue.If<Array>()) {
            array->Append(std::move(value));
        } else {
            fOpen.back().fValue.If<Dictionary>()->Set(fOpen.back().fKey, std::move(value));
        }
        return true;
    }

    static constexpr std::size_t kShownLevels = 10;

    std::string const& fFile;
    std::string_view fMember;
    std::vector<OpenValue> fOpen;
    Value fRoot;
};

} // namespace

Dictionary ReadJsonDocument(char const* member, std::string const& text, std::string const& file) {
    Builder const builder(text, file, member);
    auto const* const document = builder.Root().If<Dictionary>();
    Value const* const version = document == nullptr ? nullptr : document->Get("version");
    if (version == nullptr || *version != Value(1.0)) {
        Fail(Status::kBadInput, file, "expected a JSON object with \"version\": 1");
    }
    auto const* const dictionary = As<Dictionary>(document->Get(member));
    if (dictionary == nullptr) {
        Fail(Status::kBadInput, file, fmt::format("expected an object under \"{}\"", member));
    }
    return *dictionary;
}

} // namespace joboptions
