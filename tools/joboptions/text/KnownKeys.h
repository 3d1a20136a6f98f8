// The settings that a schema names, and keys that a schema or a file does not have.
#pragma once

#include "pdfsettings/Finding.h"
#include "pdfsettings/Schema.h"
#include "pdfsettings/Value.h"
#include "tools/joboptions/text/Findings.h"

#include <string>
#include <vector>

namespace joboptions {

// The one of choices that word may be a misspelling of; empty for none.
std::string Nearest(std::string const& word, std::vector<std::string> const& choices);

// "; did you mean …?" with control bytes made visible, and with what stands before meant in a file;
// empty for nothing.
std::string MeantText(std::string const& meant, char const* before = "");

// The settings of a file that the schema does not know, each with the one that may be meant. Where
// the schema leaves a dictionary open, nothing in it is unknown.
std::vector<PlacedFinding> UnknownKeys(
    pdfsettings::Document const& document, std::vector<pdfsettings::SettingRule> const& rules);

// The same of paths, as in pdfsettings::Find: those that the schema does not know, in their order.
std::vector<pdfsettings::Finding> UnknownPaths(
    std::vector<pdfsettings::SettingRule> const& rules, std::vector<std::string> const& paths);

// "no such key: KEY", with the key of settings that is probably meant.
std::string MissingKeyText(pdfsettings::Dictionary const& settings, std::string const& key);

} // namespace joboptions
