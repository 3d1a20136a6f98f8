// What commands write for programs, and read again: JSON documents with the version of their form.
#pragma once

#include "pdfsettings/Finding.h"
#include "pdfsettings/Schema.h"
#include "pdfsettings/Value.h"
#include "tools/joboptions/text/Differences.h"
#include "tools/joboptions/text/Findings.h"

#include <string>
#include <vector>

namespace joboptions {

// All that are written end with a line end and throw Failure with Status::kBadInput, in which file
// is named, when values are nested too deep. Values stand as ValueJson.h says.

// {"version", member: values}
std::string
JsonDocument(char const* member, pdfsettings::Dictionary const& values, std::string const& file);

// {"version", "differences": [{"key", "before", "after"}]}; a missing value is null.
std::string
DifferencesDocument(std::vector<Difference> const& differences, std::string const& file);

// The same with "findings" and "warnings": [{"key", "message"}]. The findings are the reason when
// nothing has changed.
std::string ChangeDocument(
    std::vector<Difference> const& differences,
    std::vector<pdfsettings::Finding> const& findings,
    std::vector<pdfsettings::Finding> const& warnings,
    std::string const& file);

// {"version", "files": [{"file", "error", "findings": [{"line", "column", "length", "severity",
// "id", "key", "message"}]}]}; no error and no key are null. The length is in bytes.
std::string CheckDocument(std::vector<Judgement> const& judgements);

// {"version", "files": [{"file", "error", "differs"}]}
std::string LayoutDocument(std::vector<LayoutJudgement> const& judgements);

// {"version", "settings": [{"key", "required", "kind", …}]} with what the schema in file says of
// each.
std::string
RulesDocument(std::vector<pdfsettings::SettingRule> const& rules, std::string const& file);

// The values under member in a JSON document of version 1, in the forms that ValueJson.h describes;
// other members are passed over. file is the input that messages name. Throws Failure with
// Status::kBadInput, and the place, for a text that is no JSON, for another version, for a key that
// comes twice and for a value of no known form.
pdfsettings::Dictionary
ReadJsonDocument(char const* member, std::string const& text, std::string const& file);

} // namespace joboptions
