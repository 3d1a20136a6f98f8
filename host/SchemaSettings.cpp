// The rules of a schema as a list of settings.
#include "pdfsettings/Schema.h"

#include <algorithm>

namespace pdfsettings {

namespace {

constexpr char kOptional[] = "optional";

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

    std::vector<SettingRule> List(std::string const& root) {
        ListStructure(root, "");
        return std::move(fSettings);
    }

private:
    void ListStructure(std::string const& name, std::string const& prefix) {
        Value const* const value = fStructures.Get(name);
        auto const* const structure = value == nullptr ? nullptr : value->If<Dictionary>();
        bool const isInItself = std::ranges::find(fInside, name) != fInside.end();
        if (structure == nullptr || isInItself) {
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
        fSettings.push_back(setting);
        fSettings.back().kind = PlainKind(setting.kind);
        fSettings.back().element = PlainKind(setting.element);
        ListStructure(setting.kind, key + "/");
        ListStructure(setting.element, key + "[]/");
    }

    // The name of a structure says nothing outside the schema.
    std::string PlainKind(std::string const& kind) const {
        return fStructures.Get(kind) == nullptr ? kind : "dictionary";
    }

    Dictionary const& fStructures;
    std::vector<std::string> fInside;
    std::vector<SettingRule> fSettings;
};

} // namespace

std::vector<SettingRule> Schema::Settings() const {
    return Lister(fStructures).List("PDFSettings");
}

} // namespace pdfsettings
