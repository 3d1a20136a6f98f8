#include "host/detail/SchemaSettings.h"

#include <algorithm>
#include <utility>

namespace pdfsettings::detail {

namespace {

constexpr char kOptional[] = "optional";

// What people write has tens of rules, in two or three levels.
constexpr std::size_t kDeepest = 100;
constexpr std::size_t kMostRules = 10000;
constexpr std::size_t kMostBytes = std::size_t{16} << 20;

std::string TextOf(Value const* value) {
    auto const* const word = value == nullptr ? nullptr : value->If<Word>();
    return word == nullptr ? std::string() : word->text;
}

std::optional<double> NumberOf(Value const* value) {
    auto const* const number = value == nullptr ? nullptr : value->If<double>();
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
    Value const* const allowed = rule.Get("in");
    if (auto const* const values = allowed == nullptr ? nullptr : allowed->If<Array>()) {
        for (std::size_t place = 0; place < values->Size(); ++place) {
            setting.allowed.push_back(AsSetting((*values)[place], setting.kind));
        }
    }
}

void AddParts(Value const& value, std::vector<Value const*>& parts) {
    auto const* const array = value.If<Array>();
    for (std::size_t place = 0; array != nullptr && place < array->Size(); ++place) {
        parts.push_back(&(*array)[place]);
    }
    auto const* const dictionary = value.If<Dictionary>();
    for (std::size_t place = 0; dictionary != nullptr && place < dictionary->Size(); ++place) {
        parts.push_back(&dictionary->ValueAt(place));
    }
}

std::size_t TextSize(Value const& value) {
    auto const* const string = value.If<String>();
    auto const* const hexString = value.If<HexString>();
    return string != nullptr      ? string->bytes.size()
           : hexString != nullptr ? hexString->text.size()
                                  : TextOf(&value).size();
}

// About as many bytes as a value takes.
std::size_t SizeOf(Value const& value) {
    std::size_t size = 0;
    std::vector<Value const*> waiting{&value};
    while (!waiting.empty()) {
        Value const& next = *waiting.back();
        waiting.pop_back();
        size += sizeof next + TextSize(next);
        AddParts(next, waiting);
    }
    return size;
}

std::size_t SizeOf(SettingRule const& setting) {
    std::size_t size = sizeof setting + setting.key.size() + setting.help.size();
    for (Value const& value : setting.allowed) {
        size += SizeOf(value);
    }
    return size + (setting.standard ? SizeOf(*setting.standard) : 0);
}

// Lists the settings of nested structures with a path of the structures that it is in.
class Lister {
public:
    explicit Lister(Dictionary const& structures) : fStructures(structures) {}

    SchemaSettings List(std::string const& root) {
        ListStructure(root, "");
        return std::move(fList);
    }

private:
    void ListStructure(std::string const& name, std::string const& prefix) {
        Value const* const value = fStructures.Get(name);
        auto const* const structure = value == nullptr ? nullptr : value->If<Dictionary>();
        bool const isInItself = std::ranges::find(fInside, name) != fInside.end();
        if (structure == nullptr || isInItself) {
            return;
        }
        if (fInside.size() == kDeepest) {
            End(name, "structures are nested more than 100 deep");
            return;
        }
        fInside.push_back(name);
        ListRules(*structure, prefix, /*isRequired=*/true);
        Value const* const optional = structure->Get(kOptional);
        if (auto const* const rules = optional == nullptr ? nullptr : optional->If<Dictionary>()) {
            ListRules(*rules, prefix, /*isRequired=*/false);
        }
        fInside.pop_back();
    }

    void ListRules(Dictionary const& rules, std::string const& prefix, bool isRequired) {
        for (std::size_t place = 0; place < rules.Size() && fList.fFault.empty(); ++place) {
            if (!isRequired || rules.KeyAt(place) != kOptional) {
                ListRule(prefix + rules.KeyAt(place), rules.ValueAt(place), isRequired);
            }
        }
    }

    void ListRule(std::string const& key, Value const& rule, bool isRequired) {
        SettingRule setting;
        setting.key = key;
        setting.isRequired = isRequired;
        setting.kind = KindOf(rule);
        if (auto const* const details = rule.If<Dictionary>()) {
            ReadDetails(*details, setting);
        }
        fBytes += SizeOf(setting);
        if (fList.fRules.size() == kMostRules || fBytes > kMostBytes) {
            End(fInside.back(),
                "the schema describes more than 10,000 settings, or 16 MiB of them");
            return;
        }
        std::string const kind = std::exchange(setting.kind, PlainKind(setting.kind));
        std::string const element = std::exchange(setting.element, PlainKind(setting.element));
        fList.fRules.push_back(std::move(setting));
        ListStructure(kind, key + "/");
        ListStructure(element, key + "[]/");
    }

    void End(std::string const& structure, char const* fault) {
        fList.fStructure = structure;
        fList.fFault = fault;
    }

    // The name of a structure says nothing outside the schema.
    std::string PlainKind(std::string const& kind) const {
        return fStructures.Get(kind) == nullptr ? kind : "dictionary";
    }

    Dictionary const& fStructures;
    std::vector<std::string> fInside;
    std::size_t fBytes = 0;
    SchemaSettings fList;
};

} // namespace

SchemaSettings ListSettings(Dictionary const& structures) {
    return Lister(structures).List("PDFSettings");
}

} // namespace pdfsettings::detail
