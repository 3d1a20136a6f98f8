// The validator on a schema, and what its parts share: checks, messages and rules.
//
// docs/schema.md describes schemas, rules and messages. Not thread safe, except for the reference
// count.
#pragma once

#include "api/POSValidatorInterface.h"
#include "runtime/values/PosCollections.h"

namespace bibrt {

extern ContainerType gStructValidatorType;

// A check registered by a host. A copy stays callable whatever happens to the validator.
struct Check {
    POSValidatorCheckCallback fProc = nullptr; // null: no check
    void const* fUserData = nullptr;
};

} // namespace bibrt

struct POSValidator : BIBContainer {
    explicit POSValidator(bibrt::Ref<POSDict> schema) noexcept;

    // Throws std::bad_alloc.
    void SetCheck(BIBStringAtom* name, bibrt::Check const& check);

    // The check of that name; one without a procedure if there is none.
    bibrt::Check FindCheck(BIBStringAtom const* name) const noexcept;

    // The structure of that name, or null. Null too if the schema or the structure is invalid.
    POSDict* FindStructure(BIBStringAtom const* name) const noexcept;

    // The name of the main structure, from which all others must be reachable: PDFSettings, or else
    // the first one. Null if there is none.
    BIBStringAtom const* FindMainName() const noexcept;

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

struct Marks;

// Passes messages to a host's procedure, which may be null.
class MessageSink {
public:
    explicit MessageSink(POSValidatorErrorCallback proc) noexcept : fProc(proc) {}

    // Passes one message. Throws what the procedure throws, and std::bad_alloc.
    void Report(std::string_view path, std::string_view text);

    bool IsClean() const noexcept { return fIsClean; }

    // True while a caller's procedure runs, whose exceptions propagate to the caller.
    bool fIsInCaller = false;

private:
    POSValidatorErrorCallback fProc;
    bool fIsClean = true;
};

// Validates object against the structure of that name. Throws as MessageSink::Report, and what a
// check throws.
void ValidateSettings(
    POSValidator const& validator, POSObject& object, BIBStringAtom& structure, MessageSink& sink);

// Validates the schema itself. Throws as MessageSink::Report.
void CheckSchema(POSValidator const& validator, MessageSink& sink);

// Rules: reading a rule, resolving its words, and validating a value against it.

// What the type of a rule names: a kind of value, a structure of the schema, or a host's check.
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

// The key in a structure that its optional settings are under.
inline constexpr char const* kOptional = "optional";

// The entry of a schema, beside the structures, that groups settings for display: an array.
inline constexpr char const* kGroups = "groups";

// The keys of a rule.
enum class RuleKey { kType, kIn, kMin, kMax, kOf, kCount, kCheck, kDefault, kDoc, kLabel };
inline constexpr std::size_t kRuleKeys = 10;
char const* NameOf(RuleKey key) noexcept;

// A rule that was read. Everything is borrowed from the schema.
struct SchemaRule {
    POSObject* Part(RuleKey key) const noexcept { return fParts[static_cast<std::size_t>(key)]; }

    RuleType fType = RuleType::kAny;
    POSDict* fStructure = nullptr;     // of kStructure
    Check fTypeCheck;                  // of kCheck
    Check fExtraCheck;                 // of the key check
    POSObject* fParts[kRuleKeys] = {}; // the values of all rule keys; null where a key is missing
};

// A problem of a rule: the key, or null for the rule itself, and a text that continues "the schema"
// or the path.
struct RuleProblem {
    char const* fKey;
    String fText;
};
using RuleProblems = Vector<RuleProblem>;

// Reads a rule. If problems stays empty, each part except default and doc is of the kind that its
// key requires; the rule of "of" has not been read yet. Throws std::bad_alloc.
SchemaRule ReadRule(POSValidator const& validator, POSObject& source, RuleProblems& problems);

// The value of a key in a structure or rule, or null.
POSObject* FindPart(POSObject const& source, char const* key) noexcept;

// The name of the structure that a rule refers to, as an atom without a reference; null if none.
BIBStringAtom const* FindStructureName(POSValidator const& validator, POSObject& rule) noexcept;

// Whether name is the name of a kind.
bool IsKindName(std::string_view name) noexcept;

// How strictly values are validated.
enum class ValidationMode {
    kSettings, // values of a settings file
    kDefaults  // values of a schema: texts are strings, and checks pass
};

// Whether value is of the rule's type. A check is not called and counts as passed.
bool IsOfRuleType(SchemaRule const& rule, POSObject const& value, ValidationMode mode) noexcept;

// Validates value, and everything inside it, against rule. Findings about the value itself have the
// path, findings inside it begin with pathInside. Throws what callbacks throw, and std::bad_alloc.
void ValidateValue(
    POSValidator const& validator,
    MessageSink& sink,
    ValidationMode mode,
    SchemaRule const& rule,
    POSObject& value,
    std::string_view path,
    std::string_view pathInside);

// Whether two numbers are equal: settings files have them in single precision, schemas in double
// precision. And whether value is equal to an allowed one, as far as both are scalars.
bool AreSame(double a, double b) noexcept;
bool IsAllowed(POSObject const& allowed, POSObject const& value) noexcept;

// The delimiters of a value of the rule's type in messages.
Marks MarksOf(SchemaRule const& rule) noexcept;

// The message for a value that is not of the rule's type. found describes the value: "nothing" for
// a missing one. This function and the following ones throw std::bad_alloc.
String TypeMessage(SchemaRule const& rule, std::string_view found);

// The message for a value that a part of the rule rejects; empty if none does. REQUIRES: value is
// of the rule's type.
String PartsMessage(SchemaRule const& rule, POSObject const& value);

// The message for a value that the check of that name rejects without its own message.
String CheckMessage(POSObject const& name, std::string_view found);

} // namespace bibrt
