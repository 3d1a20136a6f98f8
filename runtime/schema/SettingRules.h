// Rules between settings: what must hold for the values of several settings together. They are an
// entry of a schema beside its structures, and refer to settings of its main structure.
#pragma once

#include "runtime/schema/Schema.h"

#include <span>
#include <unordered_set>

namespace bibrt {

// The entry of a schema with its rules between settings: an array.
inline constexpr char const* kRules = "rules";

// Borrowed texts.
using TextSet = std::unordered_set<
    std::string_view,
    std::hash<std::string_view>,
    std::equal_to<>,
    CallerAllocator<std::string_view>>;

// The rule of a setting of the main structure, or of one nested in it, by its path; null if there
// is none.
POSObject* FindSettingRule(POSValidator const& validator, std::string_view path);

// What a rule between settings rejects, or advises against. Valid during the call.
struct RuleFinding {
    std::string_view fPath; // of the setting to change first
    std::string_view fText;
    bool fIsWarning;
    std::span<String const> fConcerned; // the paths of all stored settings that led to it
};

class RuleListener {
public:
    virtual void OnFinding(RuleFinding const& finding) = 0;

protected:
    RuleListener() = default;
    ~RuleListener() = default;
};

// Validates settings against the rules between settings. A missing setting counts as its default; a
// rule is passed over where a value is missing or not of its type, and where nothing is stored that
// it looks at. Throws what the listener throws, and std::bad_alloc.
void CheckRulesBetween(POSValidator const& validator, POSObject& settings, RuleListener& listener);

// Validates the rules between settings of a schema themselves. path: their path. Throws as
// MessageSink::Report.
void CheckRulesOfSchema(
    POSValidator const& validator, POSObject const& rules, MessageSink& sink, String& path);

} // namespace bibrt
