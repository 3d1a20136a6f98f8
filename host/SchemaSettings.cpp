#include "host/detail/SchemaSettings.h"

#include <algorithm>

namespace pdfsettings::detail {

namespace {

constexpr char kOptional[] = "optional";

// What people write has tens of rules, in two or three levels.
constexpr std::size_t kDeepest = 100;
constexpr std::size_t kMostRules = 10000;

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
        if (structure == nullptr || isInItself || !HasRoom(name)) {
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
        for (std::size_t place = 0; place < rules.Size(); ++place) {
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
        fList.fRules.push_back(setting);
        fList.fRules.back().kind = PlainKind(setting.kind);
        fList.fRules.back().element = PlainKind(setting.element);
        ListStructure(setting.kind, key + "/");
        ListStructure(setting.element, key + "[]/");
    }

    bool HasRoom(std::string const& structure) {
        if (!fList.fFault.empty()) {
            return false;
        }
        if (fInside.size() == kDeepest) {
            fList.fFault = "structures are nested more than 100 deep";
        } else if (fList.fRules.size() > kMostRules) {
            fList.fFault = "the schema describes more than 10,000 settings";
        }
        fList.fStructure = fList.fFault.empty() ? "" : structure;
        return fList.fFault.empty();
    }

    // The name of a structure says nothing outside the schema.
    std::string PlainKind(std::string const& kind) const {
        return fStructures.Get(kind) == nullptr ? kind : "dictionary";
    }

    Dictionary const& fStructures;
    std::vector<std::string> fInside;
    SchemaSettings fList;
};

} // namespace

SchemaSettings ListSettings(Dictionary const& structures) {
    return Lister(structures).List("PDFSettings");
}

} // namespace pdfsettings::detail
