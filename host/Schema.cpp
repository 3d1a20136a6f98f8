#include "pdfsettings/Schema.h"

#include "api/BIBRuntime.h"
#include "host/detail/RunningComponent.h"
#include "host/detail/RuntimeValues.h"
#include "pdfsettings/Component.h"

#include <algorithm>
#include <cstdio>

namespace pdfsettings {

namespace {

using detail::As;
using detail::Bindings;
using detail::Ref;

constexpr char kRootStructure[] = "PDFSettings";
constexpr char kOptional[] = "optional";

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
    if (settings != nullptr && settings->Get(kOptional) == nullptr) {
        return {FaultAt(
            text, kRootStructure, std::string(kRootStructure) + " has no dictionary optional")};
    }
    return {};
}

// What people write has tens of rules, in two or three levels.
constexpr std::size_t kDeepest = 100;
constexpr std::size_t kMostRules = 10000;
constexpr std::size_t kMostBytes = std::size_t{16} << 20;

std::string TextOf(Value const* value) {
    auto const* const word = As<Word>(value);
    return word == nullptr ? std::string() : word->text;
}

std::optional<double> NumberOf(Value const* value) {
    auto const* const number = As<double>(value);
    return number == nullptr ? std::nullopt : std::optional(*number);
}

// The word that a rule names its kind by, whichever of the two forms it has.
std::string KindOf(Value const& rule) {
    auto const* const dictionary = rule.If<Dictionary>();
    return TextOf(dictionary == nullptr ? &rule : dictionary->Get("type"));
}

// A schema writes strings as words: the notation has no other form for text.
Value AsSetting(Value const& value, std::string const& kind) {
    auto const* const word = value.If<Word>();
    if (word == nullptr || (kind != "string" && kind != "hexstring")) {
        return value;
    }
    return kind == "string" ? Value(String{word->text}) : Value(HexString{word->text});
}

void ReadDetails(Dictionary const& rule, SettingRule& setting) {
    setting.count = NumberOf(rule.Get("count"));
    setting.least = NumberOf(rule.Get("min"));
    setting.greatest = NumberOf(rule.Get("max"));
    setting.help = TextOf(rule.Get("doc"));
    if (Value const* const element = rule.Get("of")) {
        setting.element = KindOf(*element);
    }
    if (Value const* const standard = rule.Get("default")) {
        setting.standard = AsSetting(*standard, setting.kind);
    }
    if (auto const* const values = As<Array>(rule.Get("in"))) {
        for (std::size_t place = 0; place < values->Size(); ++place) {
            setting.allowed.push_back(AsSetting((*values)[place], setting.kind));
        }
    }
}

// About as many bytes as a rule takes, whose values may be nested.
std::size_t SizeOf(Value const& rule) {
    std::size_t size = 0;
    std::vector<Value const*> waiting{&rule};
    while (!waiting.empty()) {
        Value const& value = *waiting.back();
        waiting.pop_back();
        size += sizeof value + TextOf(&value).size();
        auto const* const array = value.If<Array>();
        for (std::size_t place = 0; array != nullptr && place < array->Size(); ++place) {
            waiting.push_back(&(*array)[place]);
        }
        auto const* const dictionary = value.If<Dictionary>();
        for (std::size_t place = 0; dictionary != nullptr && place < dictionary->Size(); ++place) {
            waiting.push_back(&dictionary->ValueAt(place));
        }
    }
    return size;
}

// Lists the settings that the structures of a schema describe, with a path of the structures that
// it is in. A text of a few lines may name more than any memory holds, so there are limits of depth
// and number.
class Lister {
public:
    Lister(std::string const& text, Dictionary const& structures)
        : fText(text),
          fStructures(structures) {}

    // Throws SchemaError.
    std::vector<SettingRule> List() {
        ListStructure(kRootStructure, "");
        return std::move(fRules);
    }

private:
    void ListStructure(std::string const& name, std::string const& prefix) {
        auto const* const structure = As<Dictionary>(fStructures.Get(name));
        bool const isInItself = std::ranges::find(fInside, name) != fInside.end();
        if (structure == nullptr || isInItself) {
            return;
        }
        if (fInside.size() == kDeepest) {
            Refuse(name, "structures are nested more than 100 deep");
        }
        fInside.push_back(name);
        ListRules(*structure, prefix, /*isRequired=*/true);
        if (auto const* const rules = As<Dictionary>(structure->Get(kOptional))) {
            ListRules(*rules, prefix, /*isRequired=*/false);
        }
        fInside.pop_back();
    }

    void ListRules(Dictionary const& rules, std::string const& prefix, bool isRequired) {
        for (std::size_t place = 0; place < rules.Size(); ++place) {
            if (!isRequired || rules.KeyAt(place) != kOptional) {
                ListRule(prefix + rules.KeyAt(place), rules.ValueAt(place), isRequired);
            }
        }
    }

    void ListRule(std::string const& key, Value const& rule, bool isRequired) {
        fBytes += sizeof(SettingRule) + key.size() + SizeOf(rule);
        if (fRules.size() == kMostRules || fBytes > kMostBytes) {
            Refuse(
                fInside.back(),
                "the schema describes more than 10,000 settings, or 16 MiB of them");
        }
        SettingRule setting;
        setting.key = key;
        setting.isRequired = isRequired;
        setting.kind = KindOf(rule);
        if (auto const* const details = rule.If<Dictionary>()) {
            ReadDetails(*details, setting);
        }
        std::string const kind = std::exchange(setting.kind, PlainKind(setting.kind));
        std::string const element = std::exchange(setting.element, PlainKind(setting.element));
        fRules.push_back(std::move(setting));
        ListStructure(kind, key + "/");
        ListStructure(element, key + "[]/");
    }

    [[noreturn]] void Refuse(std::string const& structure, char const* reason) const {
        throw SchemaError({FaultAt(fText, structure, structure + ": " + reason)});
    }

    // The name of a structure says nothing outside the schema.
    std::string PlainKind(std::string const& kind) const {
        return fStructures.Get(kind) == nullptr ? kind : "dictionary";
    }

    std::string const& fText;
    Dictionary const& fStructures;
    std::vector<std::string> fInside;
    std::size_t fBytes = 0;
    std::vector<SettingRule> fRules;
};

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
    Ref<POSDict> const dict = ReadDict(*turn, text);
    ThrowIfAny(LocateMessages(text, ValidateSchema(*turn, dict.get())));
    Dictionary const structures = detail::ReadValues(*turn, dict.get());
    ThrowIfAny(FindMissing(text, structures));
    auto settings = Lister(text, structures).List();
    return Schema(std::move(text), std::move(settings));
}

} // namespace pdfsettings
