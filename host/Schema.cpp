#include "pdfsettings/Schema.h"

#include "api/BIBRuntime.h"
#include "host/detail/Ref.h"
#include "host/detail/RunningComponent.h"
#include "host/detail/RuntimeValues.h"
#include "host/detail/SchemaSettings.h"
#include "pdfsettings/Component.h"

#include <cstdio>

namespace pdfsettings {

namespace {

using detail::Bindings;
using detail::Ref;

constexpr char kRootStructure[] = "PDFSettings";

// The checks that the component registers when it judges settings.
constexpr char const* kChecks[] = {"CompatibilityLevelParams", "ImageDepthParams"};

std::string Describe(SchemaFault const& fault) {
    return "line " + std::to_string(fault.line) + ", column " + std::to_string(fault.column) +
           ": " + fault.message;
}

SchemaFault FaultAt(std::string const& text, std::string const& path, std::string message) {
    SchemaFault fault{1, 1, std::move(message)};
    BIBRuntimeLocateValue(text.c_str(), path.c_str(), &fault.line, &fault.column);
    return fault;
}

// Takes the place from the front of the runtime's message.
SchemaFault ParseFault(char const* message) {
    SchemaFault fault{1, 1, message};
    int size = 0;
    if (std::sscanf(message, "line %lu, column %lu: %n", &fault.line, &fault.column, &size) == 2) {
        fault.message.erase(0, static_cast<std::size_t>(size));
    }
    return fault;
}

Ref<POSDict> ReadDict(Bindings const& tables, std::string const& text) {
    char const* message = "";
    POSObject* const value = tables.objects.CreateFromText(detail::WholeText(text), &message);
    if (value == nullptr) {
        throw SchemaError({ParseFault(message)});
    }
    Ref<POSObject> const held = detail::Share(tables, value);
    if (tables.dicts.IsPOSDict(value) == 0) {
        throw SchemaError({FaultAt(text, "", "expected a dictionary of structures")});
    }
    return detail::Share(tables, reinterpret_cast<POSDict*>(value));
}

// The messages of the validation that runs on this thread.
thread_local std::vector<std::string>* gMessages = nullptr;

void TakeMessage(char const* message) {
    gMessages->emplace_back(message);
}

long AcceptAll(
    POSObject* /*value*/,
    BIBStringAtom* /*key*/,
    BIBSharedBuffer* /*message*/,
    void const* /*userData*/) {
    return 1;
}

std::vector<std::string> ValidateSchema(Bindings const& tables, POSDict* schema) {
    Ref<POSValidator> const validator =
        detail::Share(tables, tables.validators.NewPOSStructValidator(schema));
    for (char const* const name : kChecks) {
        detail::AtomRef const atom = detail::MakeAtom(tables, name);
        tables.validators.RegisterCallbackProc(validator.get(), atom.get(), &AcceptAll, nullptr);
    }
    std::vector<std::string> messages;
    gMessages = &messages;
    bool const isSound = tables.validators.ValidateSchema(validator.get(), &TakeMessage) != 0;
    if (!isSound && messages.empty()) {
        detail::ThrowOutOfMemory();
    }
    return messages;
}

// Nobody reads more at once, and each is looked for in the whole text.
constexpr std::size_t kMostFaults = 100;

// A message is the path in the schema, a space, and the text.
std::vector<SchemaFault>
LocateMessages(std::string const& text, std::vector<std::string> const& messages) {
    std::vector<SchemaFault> faults;
    for (std::string const& message : messages) {
        if (faults.size() == kMostFaults) {
            std::size_t const rest = messages.size() - kMostFaults;
            faults.push_back({1, 1, "and " + std::to_string(rest) + " more"});
            break;
        }
        if (message.find(' ') == std::string::npos) {
            detail::ThrowOutOfMemory();
        }
        std::string const path = message.substr(0, message.find(' '));
        faults.push_back(FaultAt(text, path, path + ":" + message.substr(path.size())));
    }
    return faults;
}

// What the component wants of a schema beyond the language.
std::vector<SchemaFault> FindMissing(std::string const& text, Dictionary const& structures) {
    Value const* const root = structures.Get(kRootStructure);
    if (root == nullptr) {
        return {FaultAt(text, "", std::string("the structure ") + kRootStructure + " is missing")};
    }
    auto const* const settings = root->If<Dictionary>();
    if (settings != nullptr && settings->Get("optional") == nullptr) {
        return {FaultAt(
            text, kRootStructure, std::string(kRootStructure) + " has no dictionary optional")};
    }
    return {};
}

void ThrowIfAny(std::vector<SchemaFault> faults) {
    if (!faults.empty()) {
        throw SchemaError(std::move(faults));
    }
}

} // namespace

SchemaError::SchemaError(std::vector<SchemaFault> faults)
    : Error(Describe(faults.front())),
      fFaults(std::move(faults)) {}

Schema::Schema(std::string text, std::vector<SettingRule> settings)
    : fText(std::move(text)),
      fSettings(std::move(settings)) {}

Schema Schema::FromText(Component const& component, std::string text) {
    detail::Turn const turn(*component.fRunning);
    Bindings const& tables = turn.Tables();
    Ref<POSDict> const dict = ReadDict(tables, text);
    ThrowIfAny(LocateMessages(text, ValidateSchema(tables, dict.get())));
    Dictionary const structures = detail::ReadValues(tables, dict.get());
    ThrowIfAny(FindMissing(text, structures));
    auto [settings, structure, fault] = detail::ListSettings(structures);
    if (!fault.empty()) {
        throw SchemaError({FaultAt(text, structure, structure + ": " + fault)});
    }
    return Schema(std::move(text), std::move(settings));
}

} // namespace pdfsettings
