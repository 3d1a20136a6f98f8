// A validator on a schema, and the messages that it gives.
#pragma once

#include "conformance/Runtime.h"

#include <string>
#include <utility>
#include <vector>

namespace conformance {

class StructValidator {
public:
    StructValidator(Runtime const& runtime, POSDict* schema)
        : fRuntime(runtime),
          fRows(runtime.Rows<_t_POSStructValidatorInterface>()),
          fSelf(runtime.Hold(fRows.NewPOSStructValidator(schema))),
          fMethods(runtime.Methods<_t_POSValidatorVirtualInterface>(Self())) {}
    StructValidator(Runtime const& runtime, std::string const& schema)
        : StructValidator(runtime, runtime.Hold(As<POSDict>(runtime.Parse(schema.c_str())))) {}

    void
    Register(char const* name, POSValidatorCheckCallback check, void const* data = nullptr) const {
        Require(
            fRows.RegisterCallbackProc(fSelf, Atom(fRuntime, name), check, data) != 0,
            "nonzero of RegisterCallbackProc",
            "zero");
    }

    // The messages about value, whose last reference may go with them. Fails if the result does
    // not fit them.
    std::vector<std::string> Validate(POSObject* value, char const* structure) const {
        Held const held(fRuntime.Containers(), value);
        return Collect(
            [&] { return fMethods.Validate(fSelf, held, Atom(fRuntime, structure), &Keep); });
    }
    std::vector<std::string> ValidateSchema() const {
        return Collect([&] { return fRows.ValidateSchema(fSelf, &Keep); });
    }

    POSValidator* Self() const noexcept { return fSelf; }
    _t_POSValidatorVirtualInterface const& Methods() const noexcept { return fMethods; }

    // Keeps a message for TakeMessages.
    static void Keep(char const* message) { gMessages.emplace_back(message ? message : "(null)"); }
    static std::vector<std::string> TakeMessages() { return std::exchange(gMessages, {}); }

private:
    template <class Work>
    static std::vector<std::string> Collect(Work work) {
        TakeMessages();
        long const isValid = work();
        auto messages = TakeMessages();
        Require(
            (isValid != 0) == messages.empty(),
            "nonzero if there was no message, zero otherwise",
            std::to_string(messages.size()) + " messages");
        return messages;
    }

    static inline thread_local std::vector<std::string> gMessages;

    Runtime const& fRuntime;
    _t_POSStructValidatorInterface fRows;
    Held<POSValidator> fSelf;
    _t_POSValidatorVirtualInterface fMethods;
};

} // namespace conformance
