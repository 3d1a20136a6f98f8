// What commands write for programs, and read again: JSON documents with the version of their form.
#pragma once

#include "pdfsettings/Compare.h"
#include "pdfsettings/Finding.h"
#include "pdfsettings/Schema.h"
#include "pdfsettings/Value.h"
#include "tools/joboptions/text/Findings.h"

#include <string>
#include <vector>

namespace joboptions {

// All that are written end with a line end and throw Failure with Status::kBadInput, in which file
// is named, when values are nested too deep. Values stand as ValueJson.h says.

// {"version", member: values}; a tail stands under "AlembicorData".
std::string JsonDocument(
    char const* member,
    pdfsettings::Dictionary const& values,
    std::string const& tail,
    std::string const& file);

using Differences = pdfsettings::Sequence<pdfsettings::Difference>;

// {"version", "differences": [{"key", "before", "after"}]}; a missing value is null.
std::string DifferencesDocument(Differences const& differences, std::string const& file);

// The same with "findings" and "warnings": [{"key", "message"}]. The findings are the reason when
// nothing has changed.
std::string ChangeDocument(
    Differences const& differences,
    std::vector<pdfsettings::Finding> const& findings,
    std::vector<pdfsettings::Finding> const& warnings,
    std::string const& file);

// {"version", "files": [{"file", "error", "findings": [{"line", "column", "length", "severity",
// "id", "key", "message"}]}]}; no error and no key are null. The length is in bytes.
std::string CheckDocument(std::vector<CheckedFile> const& files);

// {"version", "files": [{"file", "error", "differs"}]}
std::string LayoutDocument(std::vector<FormattedFile> const& files);

// {"version", "settings": [{"key", "required", "kind", …}]} with what the schema in file says of
// each.
std::string RulesDocument(std::vector<pdfsettings::Rule> const& rules, std::string const& file);

// Values and what follows them in their file.
struct SettingsOfJson {
    pdfsettings::Dictionary fValues;
    std::string fTail;
};

// What stands under member in a JSON document of version 1, in the forms that ValueJson.h
// describes; other members are passed over. file is the input that messages name. Throws Failure
// with Status::kBadInput, and the place, for a text that is no JSON, for another version, for a key
// that comes twice and for a value of no known form.
SettingsOfJson
ReadJsonDocument(char const* member, std::string const& text, std::string const& file);

} // namespace joboptions
