// The validator on a schema, and what its parts share: its checks and its messages.
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

// Judges object by the structure of that name. Throws as MessageSink::Report does, and what a check
// throws.
void JudgeSettings(
    POSValidator const& validator, POSObject& object, BIBStringAtom& structure, MessageSink& sink);

// Judges the schema itself. Throws as MessageSink::Report does.
void JudgeSchema(POSValidator const& validator, MessageSink& sink);

} // namespace bibrt
