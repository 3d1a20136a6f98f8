// The validator: kinds, checks, the form of messages, and what else rules may say.
#include "conformance/Group.h"
#include "conformance/Groups.h"
#include "conformance/StructValidator.h"

#include <cstring>
#include <new>

namespace conformance {

namespace {

// A check that accepts 7 alone; with user data, it writes that as its message.
long AcceptSeven(
    POSObject* value, BIBStringAtom* /*key*/, BIBSharedBuffer* /*message*/, void const* userData) {
    auto const& runtime = *static_cast<Runtime const*>(userData);
    return runtime.NumberOf(value) == 7.0 ? 1 : 0;
}

long Explain(
    POSObject* /*value*/, BIBStringAtom* /*key*/, BIBSharedBuffer* message, void const* userData) {
    auto const& runtime = *static_cast<Runtime const*>(userData);
    constexpr char kMessage[] = "its own message";
    std::memcpy(runtime.Buffers().GetBuffer(message), kMessage, sizeof kMessage);
    return 0;
}

constexpr unsigned long kMessageSize = 256;

long Fill(
    POSObject* /*value*/, BIBStringAtom* /*key*/, BIBSharedBuffer* message, void const* userData) {
    auto const& runtime = *static_cast<Runtime const*>(userData);
    std::memset(runtime.Buffers().GetBuffer(message), 'x', kMessageSize - 1);
    return 0;
}

// A check that accepts everything if its buffer begins with 256 zero bytes.
long AcceptEmptyBuffer(
    POSObject* /*value*/, BIBStringAtom* /*key*/, BIBSharedBuffer* message, void const* userData) {
    auto const& runtime = *static_cast<Runtime const*>(userData);
    std::string const bytes(kMessageSize, '\0');
    return runtime.Buffers().GetSize(message) >= kMessageSize &&
                   std::memcmp(runtime.Buffers().GetBuffer(message), bytes.data(), kMessageSize) ==
                       0
               ? 1
               : 0;
}

// A check that accepts everything under the key that is its user data.
long AcceptKey(
    POSObject* /*value*/, BIBStringAtom* key, BIBSharedBuffer* /*message*/, void const* userData) {
    return key == userData ? 1 : 0;
}

class Validator : public StructValidator {
public:
    Validator(Runtime const& runtime, char const* schema)
        : StructValidator(runtime, schema),
          fRuntime(runtime) {
        Register("Seven", &AcceptSeven, &runtime);
        Register("Explained", &Explain, &runtime);
    }

    std::vector<std::string> Validate(char const* settings) const {
        return StructValidator::Validate(fRuntime.Parse(settings), "Settings");
    }

private:
    Runtime const& fRuntime;
};

// Expects that these settings have exactly one message, about that path, or with a null path none.
void ExpectMessage(Validator const& validator, char const* settings, char const* path) {
    auto const messages = validator.Validate(settings);
    Expect(settings, path ? 1UL : 0UL, messages.size());
    if (path) {
        std::string const& message = messages.front();
        Expect("the path of the message", std::string(path), message.substr(0, message.find(' ')));
    }
}

// Expects no message about the schema.
void ExpectSound(Validator const& validator) {
    auto const messages = validator.ValidateSchema();
    Expect(
        "the message about a sound schema",
        std::string(),
        messages.empty() ? std::string() : messages.front());
}

// What every validator knows.
constexpr char kSchema[] = "< Settings < Needed number optional <"
                           " Flag boolean Whole integer Word name Any any List array Nested Part"
                           " Typed < type number > Checked Seven Said Explained"
                           " > > Part < optional < Deep number > > >";

void AcceptsValidSettings(Runtime const& runtime) {
    Validator const validator(runtime, kSchema);
    ExpectMessage(
        validator,
        "< Needed 1 Flag true Whole -3 Word A Any [ ] List [ 1 A ] Nested < Deep 1 Other x >"
        " Typed 3 Checked 7 Unknown 1 >",
        nullptr);
    auto const containers = runtime.Containers();
    int deleted = 0;
    POSObject* const unowned = runtime.Parse("< Needed 1 >");
    runtime.Succeed(
        "RegisterInstance",
        containers.RegisterInstance(
            As<BIBContainer>(unowned),
            &deleted,
            Atom(runtime, "ConformanceWatch"),
            [](void* counter) { ++*static_cast<int*>(counter); }));
    validator.Methods().Validate(validator.Self(), unowned, Atom(runtime, "Settings"), nullptr);
    Expect("destructions of an unowned value by Validate", 0, deleted);
    Require(
        containers.DeleteUnownedContainer(As<BIBContainer>(unowned)) != 0,
        "a value that is unowned as before Validate",
        "with references");
}

void RejectsOtherKinds(Runtime const& runtime) {
    Validator const validator(runtime, kSchema);
    for (auto const& [settings, path] :
         {std::pair("< Needed A >", "Needed"),
          std::pair("< Needed 1 Flag 1 >", "Flag"),
          std::pair("< Needed 1 Whole 1.5 >", "Whole"),
          std::pair("< Needed 1 Whole 1e16 List A >", "List"),
          std::pair("< Needed 1 Whole -1e300 List A >", "List"),
          std::pair("< Needed 1 Word true >", "Word"),
          std::pair("< Needed 1 List A >", "List"),
          std::pair("< Needed 1 Typed A >", "Typed"),
          std::pair("< Needed 1 Nested 1 >", "Nested"),
          std::pair("< Needed 1 Nested < Deep A > >", "Nested/Deep")}) {
        ExpectMessage(validator, settings, path);
    }
}

void RejectsByParts(Runtime const& runtime) {
    Validator const validator(
        runtime,
        "< Settings < Needed number optional < Range < type number min 1 max 3 >"
        " Choice < type name in [ A B ] > Two < type array count 2 of integer >"
        " Checked < type number check Seven > Parts < type array of Part >"
        " Keys < type array of Key > > > Part < Deep number optional < > > >");
    Atom const key(runtime, "Keys");
    validator.Register("Key", &AcceptKey, key);
    ExpectSound(validator);
    ExpectMessage(
        validator,
        "< Needed 1 Range 3 Choice B Two [ 1 2 ] Checked 7 Parts [ < Deep 1 > ] Keys [ 1 ] >",
        /*path=*/nullptr);
    // The bounds in single precision.
    ExpectMessage(validator, "< Needed 1 Range 0.99999999 >", /*path=*/nullptr);
    ExpectMessage(validator, "< Needed 1 Range 3.00000001 >", /*path=*/nullptr);
    for (auto const& [settings, path] :
         {std::pair("< Needed 1 Range 0 >", "Range"),
          std::pair("< Needed 1 Range 4 >", "Range"),
          std::pair("< Needed 1 Choice C >", "Choice"),
          std::pair("< Needed 1 Two [ 1 ] >", "Two"),
          std::pair("< Needed 1 Two [ 1 A ] >", "Two/1"),
          std::pair("< Needed 1 Parts [ < Deep 1 > < > ] >", "Parts/1/Deep"),
          std::pair("< Needed 1 Checked 8 >", "Checked")}) {
        ExpectMessage(validator, settings, path);
    }
}

void RequiresRequiredSettings(Runtime const& runtime) {
    Validator const validator(runtime, kSchema);
    ExpectMessage(validator, "< Flag true >", "Needed");
}

void ReportsEachSetting(Runtime const& runtime) {
    Validator const validator(runtime, kSchema);
    Expect(
        "messages for three invalid settings", 3UL, validator.Validate("< Flag 1 Word 0 >").size());
    Validator const twice(runtime, "< Settings < Both number optional < Both number > > >");
    ExpectMessage(twice, "< Both A >", "Both");
    ExpectMessage(twice, "< >", "Both");
    for (auto const& [key, path] :
         {std::pair("(caf\\303\\251)", "caf\xC3\xA9"),
          {"(a b)", "a_b"},
          {"(\\177)", "_"},
          {"()", "_"}}) {
        Validator const odd(runtime, ("< Settings < " + std::string(key) + " number > >").c_str());
        ExpectMessage(odd, "< >", path);
    }
}

void CallsChecks(Runtime const& runtime) {
    Validator const validator(runtime, kSchema);
    ExpectMessage(validator, "< Needed 1 Checked 8 >", "Checked");
    Expect(
        "the message of a check",
        std::string("Said its own message"),
        validator.Validate("< Needed 1 Said 1 >").at(0));
    Atom const key(runtime, "Checked");
    validator.Register("Seven", &AcceptKey, key);
    Expect(
        "messages of a check that replaces another one, with its own data and the key",
        0UL,
        validator.Validate("< Needed 1 Checked 8 >").size());
    // Dirties the memory that the next buffer may get.
    validator.Register("Explained", &Fill, &runtime);
    ExpectMessage(validator, "< Needed 1 Said 1 >", "Said");
    validator.Register("Seven", &AcceptEmptyBuffer, &runtime);
    Expect(
        "messages of a check that wants a buffer of 256 zero bytes",
        0UL,
        validator.Validate("< Needed 1 Checked 8 >").size());
}

void ChecksSchemas(Runtime const& runtime) {
    ExpectSound(Validator(runtime, kSchema));
    // Entries for those who know them.
    ExpectSound(Validator(runtime, "< Settings < Needed number > groups [ ] rules [ ] >"));
    for (auto const& [schema, path] :
         {std::pair("< Settings < optional < B any > A numbr > >", "Settings/A"),
          std::pair("< Settings < optional < B numbr > A any > >", "Settings/optional/B")}) {
        auto const messages = Validator(runtime, schema).ValidateSchema();
        Expect("messages about an unknown kind", 1UL, messages.size());
        Expect(
            "the path in the schema",
            std::string(path),
            messages.front().substr(0, messages.front().find(' ')));
    }
}

void RefusesInvalidArguments(Runtime const& runtime) {
    Validator const validator(runtime, kSchema);
    auto const rows = runtime.Rows<_t_POSStructValidatorInterface>();
    auto const number = runtime.Hold(runtime.NewNumber(1));
    Expect("a validator on null", nullptr, rows.NewPOSStructValidator(nullptr));
    Expect(
        "a validator on a number",
        nullptr,
        rows.NewPOSStructValidator(As<POSDict>(number.Value())));
    Expect(
        "RegisterCallbackProc without a name",
        0L,
        rows.RegisterCallbackProc(validator.Self(), nullptr, &AcceptSeven, &runtime));
    Expect(
        "RegisterCallbackProc without a check",
        0L,
        rows.RegisterCallbackProc(validator.Self(), Atom(runtime, "A"), nullptr, nullptr));
    auto const value = runtime.Hold(runtime.Parse("< Needed A >"));
    Expect(
        "Validate without a procedure for messages",
        0L,
        validator.Methods().Validate(validator.Self(), value, Atom(runtime, "Settings"), nullptr));
    Expect(
        "Validate of null",
        0L,
        validator.Methods().Validate(
            validator.Self(), nullptr, Atom(runtime, "Settings"), nullptr));
}

void PassesExceptions(Runtime const& runtime) {
    Validator const validator(runtime, kSchema);
    validator.Register(
        "Seven", [](POSObject*, BIBStringAtom*, BIBSharedBuffer*, void const*) -> long {
            throw std::bad_alloc();
        });
    auto const passes = [&](char const* settings, POSValidatorErrorCallback errorProc) {
        auto const value = runtime.Hold(runtime.Parse(settings));
        try {
            validator.Methods().Validate(
                validator.Self(), value, Atom(runtime, "Settings"), errorProc);
        } catch (std::bad_alloc const&) {
            return true;
        }
        return false;
    };
    Require(
        passes("< Needed A >", [](char const* /*message*/) { throw std::bad_alloc(); }) &&
            passes("< Needed 1 Checked 7 >", nullptr),
        "the exception of a callback reaches the caller",
        "it does not");
    ExpectMessage(validator, "< Needed 1 >", nullptr);
}

constexpr Check kValidatorChecks[] = {
    {"validator.accepts",
     "Valid settings have no message; a setting that the structure does not know is ignored.",
     &AcceptsValidSettings},
    {"validator.kinds", "A value of another kind is rejected.", &RejectsOtherKinds},
    {"validator.required",
     "A required setting that is missing is an error.",
     &RequiresRequiredSettings},
    {"validator.messages",
     "Each error is one message: the path of the setting, a space, the text.",
     &ReportsEachSetting},
    {"validator.checks",
     "Registered checks are called; a message that one writes replaces the validator's.",
     &CallsChecks},
    {"validator.schema", "ValidateSchema validates the schema itself.", &ChecksSchemas},
    {"validator.arguments", "Invalid arguments give zero or null.", &RefusesInvalidArguments},
    {"validator.exceptions", "An exception of a callback passes to the caller.", &PassesExceptions},
};

constexpr Check kRuleChecks[] = {
    {"rule.parts",
     "min, max, in, count, of and check reject other values, also elements.",
     &RejectsByParts},
};

} // namespace

constinit Group const kRules = {
    "rules", "POSStructValidatorInterface", Demand::kStrict, kRuleChecks};
constinit Group const kValidator = {
    "validator", "POSStructValidatorInterface", Demand::kRequired, kValidatorChecks};

} // namespace conformance
