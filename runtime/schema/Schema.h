// The validator on a schema, and what its parts share: its checks, its messages, its rules.
//
// docs/schema.md describes schemas, rules and messages. Not thread safe, apart from its reference
// count.
#pragma once

#include "api/POSValidatorInterface.h"
#include "runtime/values/PosCollections.h"

namespace bibrt {

extern ContainerType gStructValidatorType;

// A check that a host registered. A copy can be called whatever happens to the validator.
struct Check {
    POSValidatorCheckCallback fProc = nullptr; // null: no check
    void const* fUserData = nullptr;
};

} // namespace bibrt

struct POSValidator : BIBContainer {
    explicit POSValidator(bibrt::Ref<POSDict> schema) noexcept;

    // Throws std::bad_alloc.
    void SetCheck(BIBStringAtom* name, bibrt::Check const& check);

    // No check when none has the name.
    bibrt::Check FindCheck(BIBStringAtom const* name) const noexcept;

    // The structure of that name, or null; null too when one of the two lost something.
    POSDict* FindStructure(BIBStringAtom const* name) const noexcept;

    bibrt::Ref<POSDict> fSchema;

private:
    struct NamedCheck {
        BIBStringAtom const* Name() const noexcept { return fName; }

        bibrt::AtomRef fName;
        bibrt::Check fCheck;
    };

    bibrt::Vector<NamedCheck> fChecks;
};

namespace bibrt {

// Hands messages to a host's procedure, which may be null.
class MessageSink {
public:
    explicit MessageSink(POSValidatorErrorCallback proc) noexcept : fProc(proc) {}

    // Throws what the procedure throws, and std::bad_alloc.
    void Report(std::string_view path, std::string_view text);

    bool IsClean() const noexcept { return fIsClean; }

    // Set while a caller's procedure runs, whose exceptions are not the runtime's own.
    bool fIsInCaller = false;

private:
    POSValidatorErrorCallback fProc;
    bool fIsClean = true;
};

// Validates object by the structure of that name. Throws as MessageSink::Report does, and what a
// check throws.
void ValidateSettings(
    POSValidator const& validator, POSObject& object, BIBStringAtom& structure, MessageSink& sink);

// Checks the schema itself. Throws as MessageSink::Report does.
void CheckSchema(POSValidator const& validator, MessageSink& sink);

// The rules: reading one, finding what its words mean, and comparing one value with it.

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

// The entry of a schema, beside the structures, that arranges the settings for people: an array.
inline constexpr char const* kGroups = "groups";

// The keys of a rule.
enum class RuleKey { kType, kIn, kMin, kMax, kOf, kCount, kCheck, kDefault, kDoc, kLabel };
inline constexpr std::size_t kRuleKeys = 10;
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
struct RuleProblem {
    char const* fKey;
    String fText;
};
using RuleProblems = Vector<RuleProblem>;

// The rule that source is. When problems stays empty, every part but default and doc is of its
// kind, and what of is awaits its own reading. Throws std::bad_alloc.
SchemaRule ReadRule(POSValidator const& validator, POSObject& source, RuleProblems& problems);

// The value under a key of a structure or rule, or null.
POSObject* FindPart(POSObject const& source, char const* key) noexcept;

// The name of the structure that a rule asks for, as an atom without a reference; null for none.
BIBStringAtom const* FindStructureName(POSValidator const& validator, POSObject& rule) noexcept;

// Whether name is that of a kind.
bool IsKindName(std::string_view name) noexcept;

// How strictly values are validated.
enum class ValidationMode {
    kSettings, // values of a settings file
    kDefaults  // values of a schema: texts count as strings, checks as passed
};

// Whether value is of the rule's type; a check is not called and counts as passed.
bool IsOfRuleType(SchemaRule const& rule, POSObject const& value, ValidationMode mode) noexcept;

// Validates value by rule, and all that lies in it. Its own problems have the path, and those of
// what lies in it behind pathInside. Throws what callbacks throw, and std::bad_alloc.
void ValidateValue(
    POSValidator const& validator,
    MessageSink& sink,
    ValidationMode mode,
    SchemaRule const& rule,
    POSObject& value,
    std::string_view path,
    std::string_view pathInside);

// Why value is not of the rule's type; found is what it is, "nothing" for a missing one. This and
// all below throw std::bad_alloc.
String TypeMessage(SchemaRule const& rule, std::string_view found);

// Why a part of the rule does not let value pass; empty where all do. REQUIRES: value is of the
// rule's type.
String PartsMessage(SchemaRule const& rule, POSObject const& value);

// Why value does not pass the check of that name, which said no more.
String CheckMessage(POSObject const& name, std::string_view found);

} // namespace bibrt
