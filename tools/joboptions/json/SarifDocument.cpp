#include "tools/joboptions/json/SarifDocument.h"

#include "tools/joboptions/json/ValueJson.h"
#include "tools/joboptions/text/FindingIds.h"
#include "tools/joboptions/text/Utf8.h"

#include <algorithm>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace joboptions {

using Json = nlohmann::ordered_json;
using pdfsettings::Document;
using pdfsettings::Finding;
using pdfsettings::Refusal;
using pdfsettings::Severity;

namespace {

// A file as a URI reference of RFC 3986.
std::string UriOf(std::string const& file) {
    constexpr std::string_view kPlain = "-._~/";
    std::string uri = file.starts_with('/') ? "file://" : "";
    for (char const letter : file) {
        auto const byte = static_cast<unsigned char>(letter);
        bool const isPlain = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
                             (byte >= 'a' && byte <= 'z') ||
                             kPlain.find(letter) != std::string_view::npos;
        uri += isPlain ? std::string(1, letter) : fmt::format("%{:02X}", byte);
    }
    return uri;
}

Json Message(std::string const& text) {
    return Json{{"text", WellFormedText(text)}};
}

Json Location(std::string const& file, Json region) {
    Json physical{{"artifactLocation", {{"uri", UriOf(file)}}}};
    if (!region.is_null()) {
        physical["region"] = std::move(region);
    }
    return Json{{"physicalLocation", std::move(physical)}};
}

Json RegionOf(Document const& document, Finding const& finding) {
    pdfsettings::Span const span = *finding.Bytes();
    pdfsettings::Place const end = document.PlaceOf(span.end);
    return Json{
        {"startLine", finding.Where()->line},
        {"startColumn", finding.Where()->column},
        {"endLine", end.line},
        {"endColumn", end.column},
        {"byteOffset", span.begin},
        {"byteLength", span.Size()}};
}

Json ResultOf(CheckedFile const& checked, Finding const& finding) {
    Json location = Location(checked.file, RegionOf(*checked.document, finding));
    std::string const path = WellFormedText(finding.Path());
    if (!path.empty()) {
        location["logicalLocations"].push_back({{"fullyQualifiedName", path}});
    }
    Json result{
        {"ruleId", finding.Id()},
        {"level", finding.Level() == Severity::kError ? "error" : "warning"},
        {"message", Message((path.empty() ? "" : path + ": ") + finding.Message())},
        {"locations", Json::array({std::move(location)})}};
    for (Finding const& related : finding.Related()) {
        Json place = Location(checked.file, RegionOf(*checked.document, related));
        place["message"] = Message(related.Path());
        result["relatedLocations"].push_back(std::move(place));
    }
    return result;
}

// A file that could not be read or repaired.
Json NotificationOf(CheckedFile const& checked) {
    return Json{
        {"level", "error"},
        {"message", Message(checked.error)},
        {"locations", Json::array({Location(checked.file, {})})}};
}

// What the ids of the results mean.
Json RulesOf(Json const& results) {
    Json rules = Json::array();
    for (FindingId const& known : FindingIds()) {
        bool const isUsed = std::ranges::any_of(
            results, [&](Json const& result) { return result["ruleId"] == known.id; });
        if (isUsed) {
            rules.push_back({{"id", known.id}, {"shortDescription", Message(known.meaning)}});
        }
    }
    return rules;
}

} // namespace

std::string SarifDocument(std::vector<CheckedFile> const& files) {
    Json results = Json::array();
    Json notifications = Json::array();
    for (CheckedFile const& checked : files) {
        bool const isRead = checked.document && checked.document->WhyRefused() == Refusal::kNone;
        if (!checked.error.empty() && (isRead || !checked.document)) {
            notifications.push_back(NotificationOf(checked));
        }
        for (Finding const& finding : checked.findings) {
            results.push_back(ResultOf(checked, finding));
        }
    }
    Json const driver{
        {"name", "joboptions"}, {"version", JOBOPTIONS_VERSION}, {"rules", RulesOf(results)}};
    Json const invocation{
        {"executionSuccessful", notifications.empty()},
        {"toolExecutionNotifications", std::move(notifications)}};
    Json run{
        {"tool", {{"driver", driver}}},
        {"columnKind", "unicodeCodePoints"},
        {"newlineSequences", {"\r\n", "\n", "\r"}},
        {"invocations", Json::array({invocation})},
        {"results", std::move(results)}};
    return JsonText(
        {{"$schema",
          "https://docs.oasis-open.org/sarif/sarif/v2.1.0/os/schemas/sarif-schema-2.1.0.json"},
         {"version", "2.1.0"},
         {"runs", Json::array({std::move(run)})}});
}

} // namespace joboptions
