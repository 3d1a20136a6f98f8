#include "tools/joboptions/commands/SchemaOption.h"

#include "tools/joboptions/commands/Failure.h"
#include "tools/joboptions/commands/Input.h"
#include "tools/joboptions/text/Utf8.h"

#include <fmt/format.h>

namespace joboptions {

namespace {

[[noreturn]] void
ThrowFaults(std::string const& name, std::vector<pdfsettings::SchemaFault> const& faults) {
    std::string message;
    for (pdfsettings::SchemaFault const& fault : faults) {
        message += fmt::format(
            "{}{}:{}:{}: {}",
            message.empty() ? "" : "\n",
            name,
            fault.line,
            fault.column,
            VisibleText(fault.message));
    }
    throw Failure(Status::kBadSchema, message);
}

std::string ReadText(std::string const& file) {
    try {
        return ReadBytes(file);
    } catch (Failure const& failure) {
        throw Failure(Status::kBadSchema, failure.what());
    }
}

} // namespace

pdfsettings::Schema ReadSchema(pdfsettings::Component const& component, Options const& options) {
    bool const isStandard = options.schema.empty();
    std::string const name = isStandard ? "standard schema" : InputName(options.schema);
    std::string text =
        isStandard ? std::string(pdfsettings::Schema::StandardText()) : ReadText(options.schema);
    try {
        return pdfsettings::Schema::FromText(component, std::move(text));
    } catch (pdfsettings::SchemaError const& error) {
        ThrowFaults(name, error.Faults());
    } catch (pdfsettings::Error const& error) {
        throw Failure(Status::kBadSchema, fmt::format("{}: {}", name, VisibleText(error.what())));
    }
}

} // namespace joboptions
