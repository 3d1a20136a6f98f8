// The settings that a schema names, and keys that a schema or a file does not have.
#pragma once

#include "pdfsettings/Schema.h"
#include "pdfsettings/Value.h"
#include "tools/joboptions/text/Findings.h"

#include <map>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

namespace joboptions {

// The one of choices that word may be a misspelling of; empty for none.
std::string Nearest(std::string const& word, std::vector<std::string> const& choices);

// "; did you mean …?" with control bytes made visible, and with what stands before meant in a file;
// empty for nothing.
std::string MeantText(std::string const& meant, char const* before = "");

// Them by the dictionary or array that they stand in, in the rule's form of a path: "[]" stands for
// any element of an array.
class KnownKeys {
public:
    explicit KnownKeys(std::vector<pdfsettings::SettingRule> const& rules);

    // Whether the schema names a key of a dictionary. Where it names none, all are as good.
    bool Has(std::string const& parent, std::string const& key) const;

    // "; did you mean …?" for a key that the schema does not name; empty for no idea.
    std::string Hint(std::string const& parent, std::string const& key) const;

    // Whether the schema names anything at all in a dictionary or an array.
    bool HasAnyIn(std::string const& parent) const;

    // What there is to say of a path as in pdfsettings::Find that the schema does not name.
    std::optional<std::string> Warning(std::string const& path) const;

private:
    void Add(std::string const& key);
    bool IsBegun(std::string const& prefix) const;

    // In the schema's order, and to be found among thousands.
    struct Names {
        std::vector<std::string> fInOrder;
        std::unordered_set<std::string> fAll;
    };

    std::map<std::string, Names> fNames;
};

// The settings of a file that the schema does not know, each with the one that may be meant. Where
// the schema leaves a dictionary open, nothing in it is unknown.
std::vector<PlacedFinding> UnknownKeys(
    pdfsettings::Document const& document, std::vector<pdfsettings::SettingRule> const& rules);

// "no such key: KEY", with the key of settings that is probably meant.
std::string MissingKeyText(pdfsettings::Dictionary const& settings, std::string const& key);

} // namespace joboptions
