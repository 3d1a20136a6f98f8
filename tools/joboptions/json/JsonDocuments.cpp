#include "tools/joboptions/json/JsonDocuments.h"

#include "tools/joboptions/json/ValueJson.h"
#include "tools/joboptions/text/Utf8.h"

#include <nlohmann/json.hpp>

namespace joboptions {

using Json = nlohmann::ordered_json;
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

std::string
JsonDocument(char const* member, pdfsettings::Dictionary const& values, std::string const& file) {
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

} // namespace joboptions
