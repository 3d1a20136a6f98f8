#include "pdfsettings/Schema.h"

#include "api/BIBRuntime.h"
#include "document/MakeSequence.h"
#include "document/Spelling.h"
#include "format/SettingPath.h"
#include "host/detail/Bindings.h"
#include "host/detail/Constraints.h"
#include "host/detail/RulesText.h"
#include "host/detail/RuntimeValues.h"
#include "pdfsettings/SafeSave.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <map>
#include <mutex>
#include <new>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace pdfsettings {

extern std::string_view const kStandardSchema;

struct detail::RuleData {
    std::string fPath;
    bool fIsRequired = false;
    std::string fKind;
    std::string fElementKind;
    std::optional<double> fCount;
    std::optional<double> fMinimum;
    std::optional<double> fMaximum;
    std::vector<Value> fAllowed;
    std::optional<Value> fDefault;
    std::string fHelp;
    std::string fLabel;
    std::string fGroup;
};

namespace {

using detail::Ref;
using detail::RuleData;
using detail::Tables;

constexpr char kRootStructure[] = "PDFSettings";
constexpr char kOptional[] = "optional";

// The checks that the component registers to validate settings.
constexpr char const* kChecks[] = {"CompatibilityLevelParams", "ImageDepthParams"};

Finding MakeProblem(std::string path, std::string message, Place place) {
    return Finding(
        Severity::kError, "schema", std::move(path), std::move(message), std::nullopt, place);
}

Finding ProblemAt(std::string const& text, std::string const& path, std::string message) {
    unsigned long line = 1;
    unsigned long column = 1;
    BIBRuntimeLocateValue(text.c_str(), path.c_str(), &line, &column);
    return MakeProblem(path, std::move(message), {line, column});
}

// Stops the reading of a schema. Never leaves this file.
struct Unusable {
    std::vector<Finding> fProblems;
};

// Moves the position at the beginning of the runtime's message into the finding.
Finding ParseProblem(std::string message) {
    unsigned long line = 1;
    unsigned long column = 1;
    int size = 0;
    if (std::sscanf(message.c_str(), "line %lu, column %lu: %n", &line, &column, &size) == 2) {
        message.erase(0, static_cast<std::size_t>(size));
    }
    return MakeProblem("", std::move(message), {line, column});
}

Ref<POSDict> ReadDict(Tables const& tables, std::string const& text) {
    std::size_t const zero = text.find('\0');
    if (zero != std::string::npos) {
        throw Unusable{{MakeProblem("", "the schema has a zero byte", Place())}};
    }
    char const* message = "";
    POSObject* const value = tables.objects.CreateFromText(text.c_str(), &message);
    if (value == nullptr && std::string_view(message) == "out of memory") {
        throw std::bad_alloc();
    }
    if (value == nullptr) {
        throw Unusable{{ParseProblem(message)}};
    }
    Ref<POSObject> const held = detail::Share(tables, value);
    if (tables.dicts.IsPOSDict(value) == 0) {
        throw Unusable{{ProblemAt(text, "", "expected a dictionary of structures")}};
    }
    return detail::Share(tables, reinterpret_cast<POSDict*>(value));
}

// The messages of the current validation on this thread.
thread_local std::vector<std::string>* gMessages = nullptr;

void KeepMessage(char const* message) {
    gMessages->emplace_back(message);
}

long AcceptAll(
    POSObject* /*value*/,
    BIBStringAtom* /*key*/,
    BIBSharedBuffer* /*message*/,
    void const* /*userData*/) {
    return 1;
}

std::vector<std::string> ValidateSchema(Tables const& tables, POSDict* schema) {
    Ref<POSValidator> const validator =
        detail::Share(tables, tables.validators.NewPOSStructValidator(schema));
    for (char const* const name : kChecks) {
        detail::AtomRef const atom = detail::MakeAtom(tables, name);
        tables.validators.RegisterCallbackProc(validator.get(), atom.get(), &AcceptAll, nullptr);
    }
    std::vector<std::string> messages;
    gMessages = &messages;
    bool const isSound = tables.validators.ValidateSchema(validator.get(), &KeepMessage) != 0;
    if (!isSound && messages.empty()) {
        throw std::bad_alloc();
    }
    return messages;
}

// A limit for readers, and for time: each position is searched for in the whole text.
constexpr std::size_t kMostProblems = 100;

// A message is the path in the schema, a blank and the text.
std::vector<Finding>
LocateMessages(std::string const& text, std::vector<std::string> const& messages) {
    std::vector<Finding> problems;
    for (std::string const& message : messages) {
        if (problems.size() == kMostProblems) {
            std::size_t const rest = messages.size() - kMostProblems;
            problems.push_back(MakeProblem("", "and " + std::to_string(rest) + " more", Place()));
            break;
        }
        if (message.find(' ') == std::string::npos) {
            throw std::bad_alloc();
        }
        std::string const path = message.substr(0, message.find(' '));
        problems.push_back(ProblemAt(text, path, path + ":" + message.substr(path.size())));
    }
    return problems;
}

// What the component requires of a schema beyond the language.
std::vector<Finding> FindMissing(std::string const& text, Dictionary const& structures) {
    Value const* const root = structures.FindKey(kRootStructure);
    if (root == nullptr) {
        return {
            ProblemAt(text, "", std::string("the structure ") + kRootStructure + " is missing")};
    }
    auto const settings = root->If<Dictionary>();
    if (settings && settings->FindKey(kOptional) == nullptr) {
        return {ProblemAt(
            text, kRootStructure, std::string(kRootStructure) + " has no dictionary optional")};
    }
    return {};
}

// Schemas in practice have tens of rules, on two or three levels.
constexpr std::size_t kDeepest = 100;
constexpr std::size_t kMostRules = 10000;
constexpr std::size_t kMostBytes = std::size_t{16} << 20;

template <class T>
std::optional<T> As(Value const* value) {
    return value == nullptr ? std::nullopt : value->If<T>();
}

std::string TextOf(Value const* value) {
    auto const name = As<Name>(value);
    return name ? name->text : std::string();
}

// The word for the kind of value of a rule, in either of its two forms.
std::string KindOf(Value const& rule) {
    auto const dictionary = rule.If<Dictionary>();
    return TextOf(dictionary ? dictionary->FindKey("type") : &rule);
}

// A schema writes strings as words, since the notation has no other form for them.
Value AsSetting(Value const& value, std::string const& kind) {
    auto const word = value.If<Name>();
    if (!word || (kind != "string" && kind != "hexstring")) {
        return value;
    }
    return kind == "string" ? Value(RawString{word->text}) : Value(HexString{word->text});
}

void ReadDetails(Dictionary const& rule, RuleData& setting) {
    setting.fCount = As<double>(rule.FindKey("count"));
    setting.fMinimum = As<double>(rule.FindKey("min"));
    setting.fMaximum = As<double>(rule.FindKey("max"));
    setting.fHelp = TextOf(rule.FindKey("doc"));
    setting.fLabel = TextOf(rule.FindKey("label"));
    if (Value const* const element = rule.FindKey("of")) {
        setting.fElementKind = KindOf(*element);
    }
    if (Value const* const standard = rule.FindKey("default")) {
        setting.fDefault = AsSetting(*standard, setting.fKind);
    }
    if (auto const values = As<Array>(rule.FindKey("in"))) {
        for (Value const& value : *values) {
            setting.fAllowed.push_back(AsSetting(value, setting.fKind));
        }
    }
}

// The approximate size of a rule in bytes; its values may be nested.
std::size_t SizeOf(Value const& rule) {
    constexpr std::size_t kOfValue = 64;
    std::size_t size = 0;
    std::vector<Value> waiting{rule};
    while (!waiting.empty()) {
        Value const value = std::move(waiting.back());
        waiting.pop_back();
        size += kOfValue + value.Bytes().size();
        auto const array = value.If<Array>().value_or(Array());
        auto const dictionary = value.If<Dictionary>().value_or(Dictionary());
        waiting.insert(waiting.end(), array.begin(), array.end());
        for (Member const& member : dictionary) {
            waiting.push_back(member.value);
        }
    }
    return size;
}

using RuleList = std::vector<std::shared_ptr<RuleData>>;

bool IsUpper(char letter) noexcept {
    return letter >= 'A' && letter <= 'Z';
}

// "Color image resolution" from "ColorImageResolution"; a run of capitals stays: "Cal RGB profile".
std::string LabelOf(std::string_view key) {
    std::string label;
    for (std::size_t i = 0; i < key.size(); ++i) {
        bool const isCapital = IsUpper(key[i]);
        bool const isNextSmall = i + 1 < key.size() && !IsUpper(key[i + 1]);
        bool const beginsWord =
            isCapital && i > 0 && (!IsUpper(key[i - 1]) || (isNextSmall && i + 1 < key.size()));
        label += beginsWord ? " " : "";
        label += beginsWord && isNextSmall ? static_cast<char>(key[i] - 'A' + 'a') : key[i];
    }
    return label;
}

struct Group {
    std::string fLabel;
    std::vector<std::string> fSettings;
};

// The groups of a schema without problems.
std::vector<Group> ReadGroups(Dictionary const& structures) {
    std::vector<Group> groups;
    Value const* const entry = structures.FindKey("groups");
    auto const list = As<Array>(entry).value_or(Array());
    for (Value const& item : list) {
        auto const group = item.As<Dictionary>();
        Group& added = groups.emplace_back();
        added.fLabel = TextOf(group.FindKey("label"));
        for (Value const& setting : group.FindKey("settings")->As<Array>()) {
            added.fSettings.push_back(TextOf(&setting));
        }
    }
    return groups;
}

// Lists the settings that the structures of a schema describe, and tracks the structures around the
// current one. Depth and number are limited: a schema of a few lines can describe more settings
// than fit into memory.
class Lister {
public:
    Lister(std::string const& text, Dictionary const& structures)
        : fText(text),
          fStructures(structures) {}

    // Throws Unusable.
    RuleList List() {
        ListStructure(kRootStructure, "");
        return std::move(fRules);
    }

private:
    void ListStructure(std::string const& name, std::string const& prefix) {
        auto const structure = As<Dictionary>(fStructures.FindKey(name));
        bool const isInItself = std::ranges::find(fInside, name) != fInside.end();
        if (!structure || isInItself) {
            return;
        }
        if (fInside.size() == kDeepest) {
            Refuse(name, "structures are nested more than 100 deep");
        }
        fInside.push_back(name);
        ListRules(*structure, prefix, /*isRequired=*/true);
        if (auto const rules = As<Dictionary>(structure->FindKey(kOptional))) {
            ListRules(*rules, prefix, /*isRequired=*/false);
        }
        fInside.pop_back();
    }

    void ListRules(Dictionary const& rules, std::string const& prefix, bool isRequired) {
        for (auto const& [key, rule] : rules) {
            if (!isRequired || key != kOptional) {
                ListRule(prefix + key, rule, isRequired);
            }
        }
    }

    void ListRule(std::string const& path, Value const& rule, bool isRequired) {
        fBytes += sizeof(RuleData) + path.size() + SizeOf(rule);
        if (fRules.size() == kMostRules || fBytes > kMostBytes) {
            Refuse(
                fInside.back(),
                "the schema describes more than 10,000 settings, or 16 MiB of them");
        }
        RuleData setting;
        setting.fPath = path;
        setting.fIsRequired = isRequired;
        setting.fKind = KindOf(rule);
        if (auto const details = rule.If<Dictionary>()) {
            ReadDetails(*details, setting);
        }
        if (setting.fLabel.empty()) {
            setting.fLabel = LabelOf(format::LastPart(path));
        }
        std::string const kind = std::exchange(setting.fKind, PlainKind(setting.fKind));
        std::string const element =
            std::exchange(setting.fElementKind, PlainKind(setting.fElementKind));
        fRules.push_back(std::make_shared<RuleData>(std::move(setting)));
        ListStructure(kind, path + "/");
        ListStructure(element, path + "/*/");
    }

    [[noreturn]] void Refuse(std::string const& structure, char const* reason) const {
        throw Unusable{{ProblemAt(fText, structure, structure + ": " + reason)}};
    }

    // The name of a structure has no meaning outside the schema.
    std::string PlainKind(std::string const& kind) const {
        return fStructures.FindKey(kind) == nullptr ? kind : "dictionary";
    }

    std::string const& fText;
    Dictionary const& fStructures;
    std::vector<std::string> fInside;
    std::size_t fBytes = 0;
    RuleList fRules;
};

void ThrowIfAny(std::vector<Finding> problems) {
    if (!problems.empty()) {
        throw Unusable{std::move(problems)};
    }
}

struct Contents {
    RuleList fRules;
    std::vector<Group> fGroups;
    std::vector<std::shared_ptr<detail::ConstraintData const>> fConstraints;
    Ref<POSDict> fDict; // null without constraints
};

// Throws Unusable.
Contents ReadContents(std::string const& text) {
    Tables const& tables = detail::RuntimeTables();
    Ref<POSDict> dict = ReadDict(tables, text);
    ThrowIfAny(LocateMessages(text, ValidateSchema(tables, dict.get())));
    Dictionary const structures = detail::ReadValues(tables, dict.get()).fValues;
    ThrowIfAny(FindMissing(text, structures));
    Contents contents{
        Lister(text, structures).List(),
        ReadGroups(structures),
        {},
        Ref<POSDict>(nullptr, {tables.containers.Release})};
    auto const form = [&](std::string const& path, Value const& word) {
        auto const rule = std::ranges::find_if(
            contents.fRules, [&](auto const& candidate) { return candidate->fPath == path; });
        return rule == contents.fRules.end() ? word : AsSetting(word, (*rule)->fKind);
    };
    contents.fConstraints = detail::ReadConstraints(structures, form);
    std::unordered_map<std::string_view, std::string const*> groupOf;
    for (Group const& group : contents.fGroups) {
        for (std::string const& setting : group.fSettings) {
            groupOf.emplace(setting, &group.fLabel);
        }
    }
    for (auto const& rule : contents.fRules) {
        auto const group = groupOf.find(format::FirstPart(rule->fPath));
        rule->fGroup = group == groupOf.end() ? "" : *group->second;
    }
    if (!contents.fConstraints.empty()) {
        contents.fDict = std::move(dict);
    }
    return contents;
}

std::optional<Kind> KindNamed(std::string_view name) {
    constexpr std::pair<std::string_view, Kind> kKinds[] = {
        {"boolean", Kind::kBool},
        {"number", Kind::kNumber},
        {"integer", Kind::kNumber},
        {"name", Kind::kName},
        {"string", Kind::kString},
        {"hexstring", Kind::kHexString},
        {"array", Kind::kArray},
        {"dictionary", Kind::kDictionary}};
    for (auto const& [word, kind] : kKinds) {
        if (word == name) {
            return kind;
        }
    }
    return std::nullopt;
}

// How values of a kind are written in a file.
std::string FormOf(std::string_view kind) {
    constexpr std::pair<std::string_view, char const*> kForms[] = {
        {"boolean", "true or false"},
        {"number", "a number"},
        {"integer", "a whole number"},
        {"name", "a name, for example /All"},
        {"string", "a string in parentheses, for example (Dot Gain 20%)"},
        {"hexstring", "a hexadecimal string, for example <FEFF>"},
        {"array", "an array, for example [ /Courier ]"},
        {"dictionary", "a dictionary, for example << /QFactor 0.4 >>"}};
    for (auto const& [word, form] : kForms) {
        if (word == kind) {
            return form;
        }
    }
    return "true, false, a number, /Name, (text), <FEFF>, [ … ] or << … >>";
}

} // namespace

Rule::Rule(std::shared_ptr<detail::RuleData const> data) noexcept : fData(std::move(data)) {}

std::string const& Rule::Path() const noexcept {
    return fData->fPath;
}

bool Rule::IsRequired() const noexcept {
    return fData->fIsRequired;
}

std::string const& Rule::KindName() const noexcept {
    return fData->fKind;
}

std::string const& Rule::ElementKindName() const noexcept {
    return fData->fElementKind;
}

std::optional<Kind> Rule::What() const noexcept {
    return KindNamed(fData->fKind);
}

bool Rule::IsInteger() const noexcept {
    return fData->fKind == "integer";
}

std::optional<double> Rule::Count() const noexcept {
    return fData->fCount;
}

std::optional<double> Rule::Minimum() const noexcept {
    return fData->fMinimum;
}

std::optional<double> Rule::Maximum() const noexcept {
    return fData->fMaximum;
}

std::span<Value const> Rule::Allowed() const noexcept {
    return fData->fAllowed;
}

Value const* Rule::Default() const noexcept {
    return fData->fDefault ? &*fData->fDefault : nullptr;
}

std::string const& Rule::Help() const noexcept {
    return fData->fHelp;
}

std::string const& Rule::Label() const noexcept {
    return fData->fLabel;
}

std::string const& Rule::Group() const noexcept {
    return fData->fGroup;
}

std::string Rule::ExpectedText() const {
    std::string values;
    for (Value const& value : fData->fAllowed) {
        values += (values.empty() ? "one of " : ", ") + value.Text();
    }
    return values.empty() ? FormOf(fData->fKind) : values;
}

struct Schema::Data {
    explicit Data(std::string text) : fText(std::move(text)) {
        auto contents = ReadContents(fText);
        for (auto& rule : contents.fRules) {
            fPlaces.emplace(rule->fPath, fRules.size());
            AddName(rule->fPath);
            fRules.push_back(Rule(std::move(rule)));
        }
        fGroups = std::move(contents.fGroups);
        fDict = std::move(contents.fDict);
        for (auto& constraint : contents.fConstraints) {
            fConstraints.push_back(Constraint(std::move(constraint)));
        }
        for (Group const& group : fGroups) {
            fLabels.push_back(group.fLabel);
        }
    }

    // The settings of a dictionary, in the schema's order, and as a set for fast search.
    struct Names {
        std::vector<std::string> fInOrder;
        std::unordered_set<std::string> fAll;
    };

    void AddName(std::string const& path) {
        std::string const name(format::LastPart(path));
        Names& names = fNames[std::string(format::ParentPath(path))];
        names.fInOrder.push_back(name);
        names.fAll.insert(name);
    }

    // The names beside a setting; null if the schema has none.
    Names const* NamesBeside(std::string_view path) const {
        auto const names = fNames.find(format::RulePath(format::ParentPath(path)));
        return names == fNames.end() ? nullptr : &names->second;
    }

    // The rule for rest, a path below parent. Each part is a key, or else the position of an
    // element.
    Rule const* Match(std::string const& parent, std::string_view rest) const {
        std::string_view const part = format::FirstPart(rest);
        std::string const prefix = parent.empty() ? parent : parent + "/";
        Rule const* rule = MatchPart(prefix + std::string(part), part, rest);
        if (rule == nullptr && !parent.empty() && format::PositionIn(part)) {
            rule = MatchPart(prefix + "*", part, rest);
        }
        return rule;
    }

    Rule const*
    MatchPart(std::string const& path, std::string_view part, std::string_view rest) const {
        if (part.size() == rest.size()) {
            auto const found = fPlaces.find(path);
            return found == fPlaces.end() ? nullptr : &fRules[found->second];
        }
        return HasNamesIn(path) ? Match(path, rest.substr(part.size() + 1)) : nullptr;
    }

    bool HasNamesIn(std::string const& path) const {
        auto const inside = fNames.lower_bound(path + "/");
        return fNames.contains(path) ||
               (inside != fNames.end() && inside->first.starts_with(path + "/"));
    }

    // Made at the first validation: who only reads settings does not need it.
    std::string const& RulesText() const {
        std::call_once(fHasRulesText, [this] {
            Tables const& tables = detail::RuntimeTables();
            fRulesText = detail::RulesText(tables, ReadDict(tables, fText).get());
        });
        return fRulesText;
    }

    std::string fText;
    mutable std::once_flag fHasRulesText;
    mutable std::string fRulesText;
    Ref<POSDict> fDict{nullptr, {nullptr}}; // of the text; null without constraints
    std::vector<Constraint> fConstraints;
    std::vector<Rule> fRules;
    std::vector<Group> fGroups;
    std::vector<std::string> fLabels;
    std::unordered_map<std::string, std::size_t> fPlaces; // by path
    std::map<std::string, Names> fNames;                  // by the path of their dictionary
};

POSDict* detail::ConstraintCheck::DictOf(Schema const& schema) noexcept {
    return schema.fData->fDict.get();
}

Schema::Schema(std::shared_ptr<Data const> data) noexcept : fData(std::move(data)) {}
Schema::Schema(Schema const&) noexcept = default;
Schema& Schema::operator=(Schema const&) noexcept = default;
Schema::~Schema() = default;

Schema const& Schema::Standard() {
    // Never destroyed: settings may be used while the program ends.
    static Schema const& standard = *new Schema(Parse(kStandardSchema));
    return standard;
}

Schema Schema::Parse(std::string_view text) {
    try {
        return Schema(std::make_shared<Data const>(std::string(text)));
    } catch (Unusable const& unusable) {
        Finding const& problem = unusable.fProblems.front();
        throw Error(Fault::kSchema, problem.Message(), {}, problem.Where());
    }
}

Schema Schema::Open(std::filesystem::path const& file) {
    std::string const text = ReadFile(file);
    try {
        return Parse(text);
    } catch (Error const& error) {
        throw error.In(file);
    }
}

Findings Schema::Problems(std::string_view text) {
    try {
        ReadContents(std::string(text));
        return {};
    } catch (Unusable& unusable) {
        return detail::MakeSequence::From(std::move(unusable.fProblems));
    }
}

std::string const& Schema::Text() const noexcept {
    return fData->fText;
}

std::string const& Schema::RulesText() const {
    return fData->RulesText();
}

std::span<Rule const> Schema::Rules() const noexcept {
    return fData->fRules;
}

std::span<std::string const> Schema::Groups() const noexcept {
    return fData->fLabels;
}

std::span<Constraint const> Schema::Constraints() const noexcept {
    return fData->fConstraints;
}

Sequence<Constraint> Schema::ConstraintsOf(std::string_view path) const {
    std::vector<Constraint> constraints;
    std::ranges::copy_if(
        fData->fConstraints, std::back_inserter(constraints), [&](Constraint const& constraint) {
            return std::ranges::find(constraint.Paths(), path) != constraint.Paths().end();
        });
    return detail::MakeSequence::From(std::move(constraints));
}

Sequence<Rule> Schema::RulesOf(std::string_view group) const {
    std::vector<Rule> rules;
    auto const found = std::ranges::find(fData->fGroups, group, &Group::fLabel);
    if (found == fData->fGroups.end()) {
        return {};
    }
    for (std::string const& setting : found->fSettings) {
        std::ranges::copy_if(fData->fRules, std::back_inserter(rules), [&](Rule const& rule) {
            return format::FirstPart(rule.Path()) == setting;
        });
    }
    return detail::MakeSequence::From(std::move(rules));
}

Rule const* Schema::Find(std::string_view path) const {
    auto const found = fData->fPlaces.find(std::string(path));
    return found != fData->fPlaces.end() ? &fData->fRules[found->second] : fData->Match("", path);
}

bool Schema::IsUnknown(std::string_view path) const {
    std::size_t end = 0;
    while (end < path.size()) {
        std::size_t const begin = end == 0 ? 0 : end + 1;
        std::string_view const part = format::FirstPart(path.substr(begin));
        end = begin + part.size();
        bool const isPosition = begin > 0 && format::PositionIn(part).has_value();
        auto const* const names = isPosition ? nullptr : fData->NamesBeside(path.substr(0, end));
        if (names != nullptr && !names->fAll.contains(std::string(part))) {
            return true;
        }
        if (part.empty()) {
            return false;
        }
    }
    return false;
}

std::string Schema::Suggest(std::string_view path) const {
    auto const* const names = fData->NamesBeside(path);
    return names == nullptr ? std::string()
                            : detail::Nearest(std::string(format::LastPart(path)), names->fInOrder);
}

bool Schema::HasRulesIn(std::string_view path) const {
    return fData->HasNamesIn(format::RulePath(path));
}

} // namespace pdfsettings
