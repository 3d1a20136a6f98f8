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

Json NewDocument() {
    return Json{{"version", 1}};
}

Json ValueOrNull(Value const* value, std::string const& file) {
    return value == nullptr ? Json() : ToJson(*value, file);
}

Json DifferencesJson(std::vector<Difference> const& differences, std::string const& file) {
    Json list = Json::array();
    for (auto const& [path, before, after] : differences) {
        list.push_back(
            {{"key", JsonKey(path)},
             {"before", ValueOrNull(before, file)},
             {"after", ValueOrNull(after, file)}});
    }
    return list;
}

// Keys come from files and may hold any byte.
Json FindingsJson(std::vector<Finding> const& findings) {
    Json list = Json::array();
    for (Finding const& finding : findings) {
        list.push_back(
            {{"key", WellFormedText(finding.key)}, {"message", WellFormedText(finding.message)}});
    }
    return list;
}

Json DiagnosticsJson(std::vector<Diagnostic> const& diagnostics) {
    Json list = Json::array();
    for (Diagnostic const& diagnostic : diagnostics) {
        bool const isError = diagnostic.severity == pdfsettings::Severity::kError;
        list.push_back(
            {{"line", diagnostic.place.line},
             {"column", diagnostic.place.column},
             {"length", diagnostic.span.Size()},
             {"severity", isError ? "error" : "warning"},
             {"id", diagnostic.id},
             {"key", diagnostic.key.empty() ? Json() : Json(WellFormedText(diagnostic.key))},
             {"message", WellFormedText(diagnostic.message)}});
    }
    return list;
}

Json ErrorJson(std::string const& error) {
    return error.empty() ? Json() : Json(WellFormedText(error));
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
    Json document = NewDocument();
    document[member] = ToJson(values, file);
    return JsonText(document);
}

std::string
DifferencesDocument(std::vector<Difference> const& differences, std::string const& file) {
    Json document = NewDocument();
    document["differences"] = DifferencesJson(differences, file);
    return JsonText(document);
}

std::string ChangeDocument(
    std::vector<Difference> const& differences,
    std::vector<Finding> const& findings,
    std::vector<Finding> const& warnings,
    std::string const& file) {
    Json document = NewDocument();
    document["differences"] = DifferencesJson(differences, file);
    document["findings"] = FindingsJson(findings);
    document["warnings"] = FindingsJson(warnings);
    return JsonText(document);
}

std::string CheckDocument(std::vector<Judgement> const& judgements) {
    Json document = NewDocument();
    document["files"] = Json::array();
    for (Judgement const& judgement : judgements) {
        document["files"].push_back(
            {{"file", WellFormedText(judgement.file)},
             {"error", ErrorJson(judgement.error)},
             {"findings", DiagnosticsJson(judgement.diagnostics)}});
    }
    return JsonText(document);
}

std::string LayoutDocument(std::vector<LayoutJudgement> const& judgements) {
    Json document = NewDocument();
    document["files"] = Json::array();
    for (LayoutJudgement const& judgement : judgements) {
        document["files"].push_back(
            {{"file", WellFormedText(judgement.file)},
             {"error", ErrorJson(judgement.error)},
             {"differs", judgement.differs}});
    }
    return JsonText(document);
}

std::string RulesDocument(std::vector<SettingRule> const& rules, std::string const& file) {
    Json document = NewDocument();
    document["settings"] = Json::array();
    for (SettingRule const& rule : rules) {
        document["settings"].push_back(RuleJson(rule, file));
    }
    return JsonText(document);
}

} // namespace joboptions
