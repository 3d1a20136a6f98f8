// The settings that a schema names.
#pragma once

#include "pdfsettings/Schema.h"

#include <map>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

namespace joboptions {

// What is said of a setting that a schema does not name.
inline constexpr char kUnknownKeyText[] = "the schema has no such setting";

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

} // namespace joboptions
