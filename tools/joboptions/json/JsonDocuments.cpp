#include "tools/joboptions/json/JsonDocuments.h"

#include "format/Tokens.h"
#include "tools/joboptions/commands/Output.h"
#include "tools/joboptions/json/ValueJson.h"
#include "tools/joboptions/text/Utf8.h"
#include "tools/joboptions/text/ValueText.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <optional>
#include <unordered_set>
#include <utility>

namespace joboptions {

using Json = nlohmann::ordered_json;
using pdfsettings::Array;
using pdfsettings::Dictionary;
using pdfsettings::Finding;
using pdfsettings::Rule;
using pdfsettings::Value;

namespace {

// The value at a path as JSON, null if it is missing. The value of the tail's key is the tail.
Json ValueOrNull(
    std::string const& path, std::optional<Value> const& value, std::string const& file) {
    if (!value) {
        return {};
    }
    return path == format::kTailKey ? Json(TailJson(value->Bytes())) : ToJson(*value, file);
}

// Texts from files may have any bytes.
Json TextOrNull(std::string const& text) {
    return text.empty() ? Json() : Json(WellFormedText(text));
}

// The results of make for all items.
template <class Items, class Make>
Json List(Items const& items, Make make) {
    Json list = Json::array();
    for (auto const& item : items) {
        list.push_back(make(item));
    }
    return list;
}

Json DifferencesJson(Differences const& differences, std::string const& file) {
    return List(differences, [&file](pdfsettings::Difference const& difference) {
        return Json{
            {"key", JsonKey(difference.path)},
            {"before", ValueOrNull(difference.path, difference.before, file)},
            {"after", ValueOrNull(difference.path, difference.after, file)}};
    });
}

template <class Items>
Json FindingsJson(Items const& findings) {
    return List(findings, [](Finding const& finding) {
        return Json{
            {"key", WellFormedText(finding.Path())},
            {"message", WellFormedText(finding.Message())}};
    });
}

Json PlacedFindingJson(Finding const& finding) {
    bool const isError = finding.Level() == pdfsettings::Severity::kError;
    Json object{
        {"line", finding.Where()->line},
        {"column", finding.Where()->column},
        {"length", finding.Bytes()->Size()},
        {"severity", isError ? "error" : "warning"},
        {"id", finding.Id()},
        {"key", TextOrNull(finding.Path())},
        {"message", WellFormedText(finding.Message())}};
    if (!finding.Related().empty()) {
        object["related"] = List(finding.Related(), [](Finding const& related) {
            return Json{
                {"line", related.Where()->line},
                {"column", related.Where()->column},
                {"key", WellFormedText(related.Path())}};
        });
    }
    return object;
}

void AddNumber(Json& object, char const* name, std::optional<double> const& number) {
    if (number) {
        object[name] = ToJson(*number, "");
    }
}

Json RuleJson(Rule const& rule, pdfsettings::Schema const& schema, std::string const& file) {
    Json object{{"key", rule.Path()}, {"required", rule.IsRequired()}, {"kind", rule.KindName()}};
    if (!rule.ElementKindName().empty()) {
        object["of"] = rule.ElementKindName();
    }
    AddNumber(object, "count", rule.Count());
    AddNumber(object, "min", rule.Minimum());
    AddNumber(object, "max", rule.Maximum());
    for (Value const& value : rule.Allowed()) {
        object["in"].push_back(ToJson(value, file));
    }
    if (rule.Default() != nullptr) {
        object["default"] = ToJson(*rule.Default(), file);
    }
    object["label"] = rule.Label();
    object["group"] = rule.Group();
    object["doc"] = rule.Help();
    for (pdfsettings::Constraint const& constraint : schema.ConstraintsOf(rule.Path())) {
        bool const isError = constraint.Level() == pdfsettings::Severity::kError;
        object["rules"].push_back(
            {{"rule", constraint.Text()},
             {"severity", isError ? "error" : "warning"},
             {"doc", constraint.Help()}});
    }
    return object;
}

} // namespace

std::string JsonDocument(
    char const* member,
    Dictionary const& values,
    std::string const& tail,
    std::string const& file) {
    Json settings = ToJson(values, file);
    if (!tail.empty()) {
        settings[std::string(format::kTailKey)] = TailJson(tail);
    }
    return JsonText({{"version", 1}, {member, std::move(settings)}});
}

std::string DifferencesDocument(Differences const& differences, std::string const& file) {
    return JsonText({{"version", 1}, {"differences", DifferencesJson(differences, file)}});
}

std::string ChangeDocument(
    Differences const& differences,
    std::vector<Finding> const& findings,
    std::vector<Finding> const& warnings,
    std::string const& file) {
    return JsonText(
        {{"version", 1},
         {"differences", DifferencesJson(differences, file)},
         {"findings", FindingsJson(findings)},
         {"warnings", FindingsJson(warnings)}});
}

std::string CheckDocument(std::vector<CheckedFile> const& files) {
    auto list = List(files, [](CheckedFile const& checked) {
        return Json{
            {"file", WellFormedText(checked.file)},
            {"error", TextOrNull(checked.error)},
            {"findings", List(checked.findings, &PlacedFindingJson)},
            {"repairs", List(checked.repairs, &PlacedFindingJson)}};
    });
    return JsonText({{"version", 1}, {"files", std::move(list)}});
}

std::string MergeDocument(
    pdfsettings::MergedDocument const& merged,
    std::vector<Finding> const& findings,
    std::string const& file) {
    auto conflicts = List(merged.conflicts, [&file](pdfsettings::MergeConflict const& conflict) {
        return Json{
            {"key", JsonKey(conflict.path)},
            {"base", ValueOrNull(conflict.path, conflict.base, file)},
            {"ours", ValueOrNull(conflict.path, conflict.ours, file)},
            {"theirs", ValueOrNull(conflict.path, conflict.theirs, file)}};
    });
    return JsonText(
        {{"version", 1},
         {"conflicts", std::move(conflicts)},
         {"findings", FindingsJson(findings)}});
}

std::string LayoutDocument(std::vector<FormattedFile> const& files) {
    auto list = List(files, [](FormattedFile const& formatted) {
        return Json{
            {"file", WellFormedText(formatted.file)},
            {"error", TextOrNull(formatted.error)},
            {"differs", formatted.differs}};
    });
    return JsonText({{"version", 1}, {"files", std::move(list)}});
}

std::string ComparisonDocument(ComparedSets const& sets) {
    auto settings = List(sets.settings, [&](pdfsettings::ComparedSetting const& setting) {
        Json values = Json::array();
        for (std::size_t set = 0; set < setting.values.size(); ++set) {
            values.push_back(ValueOrNull(setting.path, setting.values[set], sets.names[set]));
        }
        return Json{
            {"key", JsonKey(setting.path)},
            {"label", TextOrNull(setting.label)},
            {"group", TextOrNull(setting.group)},
            {"differs", setting.differs},
            {"values", std::move(values)}};
    });
    return JsonText(
        {{"version", 1},
         {"files", List(sets.names, &WellFormedText)},
         {"settings", std::move(settings)}});
}

std::string ExplanationDocument(
    std::vector<pdfsettings::ExplainedSetting> const& settings, std::string const& file) {
    auto list = List(settings, [&file](pdfsettings::ExplainedSetting const& setting) {
        Rule const& rule = setting.rule;
        Value const* const standard = rule.Default();
        return Json{
            {"key", rule.Path()},
            {"label", rule.Label()},
            {"group", rule.Group()},
            {"value", ValueOrNull(rule.Path(), setting.value, file)},
            {"default", standard == nullptr ? Json() : ToJson(*standard, file)},
            {"isStored", setting.isStored},
            {"isChanged", setting.isChanged},
            {"doc", rule.Help()}};
    });
    return JsonText({{"version", 1}, {"settings", std::move(list)}});
}

std::string RulesDocument(
    std::vector<Rule> const& rules, pdfsettings::Schema const& schema, std::string const& file) {
    auto settings = List(rules, [&](Rule const& rule) { return RuleJson(rule, schema, file); });
    return JsonText({{"version", 1}, {"settings", std::move(settings)}});
}

namespace {

// A part of an input for a message, truncated and with control bytes made visible.
std::string Quoted(std::string const& text) {
    constexpr std::size_t kMost = 300;
    return VisibleText(text.substr(0, kMost)) + (text.size() > kMost ? "..." : "");
}

// Builds values while the JSON library parses. It has its own stack of open collections, so that
// deep nesting uses no more stack, and it detects repeated keys.
class Builder {
public:
    // Parses text, and validates the value of member. Throws Failure.
    Builder(std::string const& text, std::string const& file, std::string_view member)
        : fFile(file),
          fMember(member) {
        Json::sax_parse(text, this);
    }

    Value const& Root() const { return fRoot; }
    std::string const& Tail() const { return fTail; }

    // What the library calls. NOLINTBEGIN(readability-identifier-naming)
    bool null() {
        RefuseInMember("null is not a value of a setting");
        return Store(Value());
    }
    bool boolean(bool value) { return Store(value); }
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
        auto tail = IsTail() ? TailFromJson(text) : std::nullopt;
        if (tail) {
            fTail = std::move(*tail);
            return true;
        }
        auto value = ValueFromJson(text);
        if (!value) {
            RefuseInMember(fmt::format(
                "\"{}\" is not a value: expected \"/NAME\", \"u:TEXT\", \"b:HEX\", "
                "\"x:TEXT\", \"xb:HEX\" or \"n:inf\"",
                Quoted(text)));
        }
        return Store(value ? std::move(*value) : Value());
    }
    bool binary(Json::binary_t& /*bytes*/) { return null(); }
    bool start_object(std::size_t /*size*/) { return Open(/*isArray=*/false); }
    bool start_array(std::size_t /*size*/) { return Open(/*isArray=*/true); }
    bool end_object() { return Close(); }
    bool end_array() { return Close(); }
    bool key(std::string& text) {
        OpenValue& open = fOpen.back();
        auto key = KeyFromJson(text);
        if (!key) {
            open.fKey.clear();
            RefuseInMember(fmt::format("\"{}\" is not a key", Quoted(text)));
        }
        open.fKey = key ? std::move(*key) : text;
        if (!open.fKeys.insert(open.fKey).second) {
            RefuseInMember("the key occurs twice");
        }
        return true;
    }
    bool parse_error(
        std::size_t /*offset*/, std::string const& /*token*/, Json::exception const& error) {
        // Removes the library's prefix, a name and a number, from its message.
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
        bool fIsArray;
        Array fArray;
        Dictionary fDictionary;
        std::string fKey; // the last key of an object
        std::unordered_set<std::string> fKeys;
    };

    bool IsTail() const {
        return fOpen.size() == 2 && fOpen.front().fKey == fMember &&
               fOpen.back().fKey == format::kTailKey;
    }

    [[noreturn]] void Refuse(std::string const& reason) const {
        std::string const place = Place();
        Fail(Status::kBadInput, fFile, VisibleText(place) + (place.empty() ? "" : ": ") + reason);
    }

    // Values outside the member are ignored.
    void RefuseInMember(std::string const& reason) const {
        if (!fOpen.empty() && fOpen.front().fKey == fMember) {
            Refuse(reason);
        }
    }

    // The path of the value being read; of a deep one, the beginning.
    std::string Place() const {
        std::string path;
        for (std::size_t level = 0; level < fOpen.size(); ++level) {
            OpenValue const& open = fOpen[level];
            std::string const part = open.fIsArray ? std::to_string(open.fArray.size()) : open.fKey;
            if (level == kShownLevels) {
                return path + "/...";
            }
            path += (path.empty() || part.empty() ? "" : "/") + part;
        }
        return path;
    }

    bool Open(bool isArray) {
        if (fOpen.size() > kDeepestJsonLevel) {
            Refuse(fmt::format("nested deeper than {} levels", kDeepestJsonLevel));
        }
        fOpen.push_back({isArray, {}, {}, {}, {}});
        return true;
    }

    bool Close() {
        OpenValue& open = fOpen.back();
        Value closed =
            open.fIsArray ? Value(std::move(open.fArray)) : Value(std::move(open.fDictionary));
        fOpen.pop_back();
        return Store(std::move(closed));
    }

    bool Store(Value value) {
        if (fOpen.empty()) {
            fRoot = std::move(value);
        } else if (fOpen.back().fIsArray) {
            fOpen.back().fArray.push_back(std::move(value));
        } else {
            fOpen.back().fDictionary.SetKey(fOpen.back().fKey, std::move(value));
        }
        return true;
    }

    static constexpr std::size_t kShownLevels = 10;

    std::string const& fFile;
    std::string_view fMember;
    std::vector<OpenValue> fOpen;
    Value fRoot;
    std::string fTail;
};

} // namespace

SettingsOfJson
ReadJsonDocument(char const* member, std::string const& text, std::string const& file) {
    Builder const builder(text, file, member);
    auto const document = builder.Root().If<Dictionary>();
    Value const* const version = document ? document->FindKey("version") : nullptr;
    if (version == nullptr || !(*version == Value(1))) {
        Fail(Status::kBadInput, file, "expected a JSON object with \"version\": 1");
    }
    Value const* const value = document->FindKey(member);
    auto const values = value == nullptr ? std::nullopt : value->If<Dictionary>();
    if (!values) {
        Fail(Status::kBadInput, file, fmt::format("expected an object under \"{}\"", member));
    }
    return {*values, builder.Tail()};
}

} // namespace joboptions
