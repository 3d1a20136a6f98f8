#include "conformance/Runtime.h"

namespace conformance {

Atom::Atom(Runtime const& runtime, std::string const& text) : Atom(runtime.Atoms(), text) {}

POSObject* Runtime::Parse(char const* text) const {
    char const* message = "";
    POSObject* const value = Objects().CreateFromText(text, &message);
    if (!value) {
        throw Failure{"CreateFromText reads " + Shown(text), message ? message : "null"};
    }
    return value;
}

POSObject* Runtime::NewNested(int levels) const {
    POSArray* array = Arrays().NewPOSArray();
    for (int level = 1; level < levels; ++level) {
        POSArray* const outer = Arrays().NewPOSArray();
        Require(Arrays().Append(outer, As<POSObject>(array)) != 0, "nonzero of Append", "zero");
        array = outer;
    }
    return As<POSObject>(array);
}

std::optional<double> Runtime::NumberOf(POSObject* object) const {
    auto const numbers = Numbers();
    return numbers.IsPOSNumber(object) != 0 ? std::optional(numbers.Get(As<POSNumber>(object)))
                                            : std::nullopt;
}

std::string Runtime::TakeMessage(BIBError* error) const {
    if (!error) {
        return {};
    }
    char const* const text = Atoms().GetCString(Errors().GetErrorMessage(error));
    std::string message = text ? text : "an error without a message";
    Errors().Release(error);
    return message;
}

void Runtime::Succeed(char const* row, BIBError* error) const {
    if (error) {
        throw Failure{std::string(row) + " gives no error", TakeMessage(error)};
    }
}

void Runtime::Fail(char const* row, BIBError* error) const {
    Require(error != nullptr, (std::string(row) + " gives an error").c_str(), "null");
    Errors().Release(error);
}

} // namespace conformance
