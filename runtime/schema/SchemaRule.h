// A rule of a schema: reading it, finding what its words mean, and comparing one value with it.
#pragma once

#include "runtime/schema/StructValidator.h"

namespace bibrt {

// What a rule's word names: a kind, or something of the schema's or the host's.
enum class RuleType {
    kBoolean,
    kNumber,
    kInteger,
    kName,
    kString,
    kHexString,
    kArray,
    kDictionary,
    kAny,
    kStructure,
    kCheck
};

// The key of a structure under which its optional settings stand.
inline constexpr char const* kOptional = "optional";

// The keys of a rule.
enum class RuleKey { kType, kIn, kMin, kMax, kOf, kCount, kCheck, kDefault, kDoc };
inline constexpr std::size_t kRuleKeys = 9;
char const* NameOf(RuleKey key) noexcept;

// Borrows everything from the schema.
struct SchemaRule {
    POSObject* Part(RuleKey key) const noexcept { return fParts[static_cast<std::size_t>(key)]; }

    RuleType fType = RuleType::kAny;
    POSDict* fStructure = nullptr;     // of kStructure
    Check fTypeCheck;                  // of kCheck
    Check fExtraCheck;                 // of the key check
    POSObject* fParts[kRuleKeys] = {}; // fType's word is a part too; null where nothing is said
};

// What is wrong with a rule: the key, null for the rule itself, and what the schema does there, to
// be read behind "the schema" or the place in it.
struct RuleFault {
    char const* fKey;
    String fText;
};
using RuleFaults = Vector<RuleFault>;

// The rule that source is. When faults stays empty, every part but default and doc is of its kind,
// and what of is awaits its own reading. Throws std::bad_alloc.
SchemaRule ReadRule(POSValidator const& validator, POSObject& source, RuleFaults& faults);

// The value under a key of a structure or rule, or null.
POSObject* FindPart(POSObject const& source, char const* key) noexcept;

// The name of the structure that a rule asks for, as an atom without a reference; null for none.
BIBStringAtom const* FindStructureName(POSValidator const& validator, POSObject& rule) noexcept;

// Whether name is that of a kind.
bool IsKindName(std::string_view name) noexcept;

// How strictly values are judged.
enum class JudgeMode {
    kSettings, // values of a settings file
    kDefaults  // values of a schema: texts count as strings, checks as passed
};

// Whether value is of the rule's type; a check is not called and counts as passed.
bool IsOfRuleType(SchemaRule const& rule, POSObject const& value, JudgeMode mode) noexcept;

// Whether a part of the rule lets value pass. REQUIRES: value is of the rule's type.
bool IsAmongAllowed(SchemaRule const& rule, POSObject const& value) noexcept;
bool IsWithinBounds(SchemaRule const& rule, POSObject const& value) noexcept;
bool HasCount(SchemaRule const& rule, POSObject const& value) noexcept;

// Judges value by rule, and all that lies in it. Its own faults stand under path, and those of what
// lies in it behind pathInside. Throws what callbacks throw, and std::bad_alloc.
void JudgeValue(
    POSValidator const& validator,
    MessageSink& sink,
    JudgeMode mode,
    SchemaRule const& rule,
    POSObject& value,
    std::string_view path,
    std::string_view pathInside);

// Messages on a value, where each of the above said no. found is "nothing" for a missing one. They
// throw std::bad_alloc.
String TypeMessage(SchemaRule const& rule, std::string_view found);
String AllowedMessage(SchemaRule const& rule, POSObject const& value);
String BoundsMessage(SchemaRule const& rule, POSObject const& value);
String CountMessage(SchemaRule const& rule, POSObject const& value);
String CheckMessage(POSObject const& name, std::string_view found);

} // namespace bibrt
