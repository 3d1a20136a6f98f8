// The JSON documents that commands write and read, with a version number.
#pragma once

#include "pdfsettings/Compare.h"
#include "pdfsettings/Finding.h"
#include "pdfsettings/Merge.h"
#include "pdfsettings/Review.h"
#include "pdfsettings/Schema.h"
#include "pdfsettings/Value.h"
#include "tools/joboptions/text/Comparison.h"
#include "tools/joboptions/text/Findings.h"

#include <string>
#include <vector>

namespace joboptions {

// All documents end with a line end. The functions throw Failure with Status::kBadInput, with file
// in the message, if values are nested too deep. Values are in the form of ValueJson.h.

// {"version", member: values}; the tail is under "AlembicorData".
std::string JsonDocument(
    char const* member,
    pdfsettings::Dictionary const& values,
    std::string const& tail,
    std::string const& file);

using Differences = pdfsettings::Sequence<pdfsettings::Difference>;

// {"version", "differences": [{"key", "before", "after"}]}; a missing value is null.
std::string DifferencesDocument(Differences const& differences, std::string const& file);

// As above, with "findings" and "warnings": [{"key", "message"}]. The findings are the reasons if
// nothing was changed.
std::string ChangeDocument(
    Differences const& differences,
    std::vector<pdfsettings::Finding> const& findings,
    std::vector<pdfsettings::Finding> const& warnings,
    std::string const& file);

// {"version", "files": [{"file", "error", "findings": [{"line", "column", "length", "severity",
// "id", "key", "message"}], "repairs": as findings}]}; a missing error or key is null. length is in
// bytes.
std::string CheckDocument(std::vector<CheckedFile> const& files);

// {"version", "conflicts": [{"key", "base", "ours", "theirs"}], "findings": [{"key", "message"}]};
// a missing value is null.
std::string MergeDocument(
    pdfsettings::MergedDocument const& merged,
    std::vector<pdfsettings::Finding> const& findings,
    std::string const& file);

// {"version", "files": [{"file", "error", "differs"}]}
std::string LayoutDocument(std::vector<FormattedFile> const& files);

// {"version", "files", "settings": [{"key", "label", "group", "differs", "values"}]}, with a value
// or null for each file.
std::string ComparisonDocument(ComparedSets const& sets);

// {"version", "settings": [{"key", "label", "group", "value", "default", "isStored", "isChanged",
// "doc"}]}.
std::string ExplanationDocument(
    std::vector<pdfsettings::ExplainedSetting> const& settings, std::string const& file);

// {"version", "settings": [{"key", "required", "kind", …}]} with the rules of a schema, which was
// read from file.
std::string RulesDocument(
    std::vector<pdfsettings::Rule> const& rules,
    pdfsettings::Schema const& schema,
    std::string const& file);

// Settings, and the text after them in their file.
struct SettingsOfJson {
    pdfsettings::Dictionary fValues;
    std::string fTail;
};

// The settings under member in a JSON document of version 1, in the form of ValueJson.h. Other
// members are ignored. file: the name of the input for messages. Throws Failure with
// Status::kBadInput and the position or path for invalid JSON, another version, a repeated key and
// a value of unknown form.
SettingsOfJson
ReadJsonDocument(char const* member, std::string const& text, std::string const& file);

} // namespace joboptions
