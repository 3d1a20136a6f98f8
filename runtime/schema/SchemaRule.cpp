#include "runtime/schema/Schema.h"

#include "runtime/schema/SchemaText.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace bibrt {

namespace {

constexpr char const* kKeyNames[] = {
    "type", "in", "min", "max", "of", "count", "check", "default", "doc", "label"};
static_assert(std::size(kKeyNames) == kRuleKeys);

// In the order of RuleType.
constexpr std::string_view kKindNames[] = {
    "boolean", "number", "integer", "name", "string", "hexstring", "array", "dictionary", "any"};
static_assert(std::size(kKindNames) == static_cast<std::size_t>(RuleType::kStructure));

// Limits the time for one setting, which is compared with each allowed value.
constexpr std::size_t kMostAllowed = 1000;

constexpr unsigned Bit(RuleType type) noexcept {
    return 1U << static_cast<unsigned>(type);
}

constexpr unsigned kNumbers = Bit(RuleType::kNumber) | Bit(RuleType::kInteger);
constexpr unsigned kListed =
    kNumbers | Bit(RuleType::kName) | Bit(RuleType::kString) | Bit(RuleType::kBoolean);

bool IsArray(POSObject const& value) noexcept {
    return KindOf(value) == ValueKind::kArray;
}

bool IsBound(POSObject const& value) noexcept {
    return IsOfType(&value, gNumberType) && !std::isnan(NumberOf(value));
}

bool IsCount(POSObject const& value) noexcept {
    return IsBound(value) && std::isfinite(NumberOf(value)) && NumberOf(value) >= 0 &&
           std::trunc(NumberOf(value)) == NumberOf(value);
}

// The types that a key applies to, and what its value must be.
struct Fit {
    RuleKey fKey;
    unsigned fTypes;
    char const* fFits;
    bool (*fIsValue)(POSObject const&) noexcept; // null: validated as a rule
    char const* fExpected;
};

constexpr Fit kFits[] = {
    {RuleKey::kIn, kListed, "numbers, names, strings and booleans", &IsArray, "an array"},
    {RuleKey::kMin, kNumbers, "numbers", &IsBound, "a number"},
    {RuleKey::kMax, kNumbers, "numbers", &IsBound, "a number"},
    {RuleKey::kOf, Bit(RuleType::kArray), "arrays", nullptr, ""},
    {RuleKey::kCount, Bit(RuleType::kArray), "arrays", &IsCount, "a whole number from 0"}};

// The bytes of a string of a schema; empty for other values.
std::string_view WordOf(POSObject const& value) noexcept {
    return IsOfType(&value, gStringType) ? BytesOf(value) : std::string_view();
}

// The atom of a word; null if there is none, and for an empty word, which names nothing.
BIBStringAtom const* AtomOf(POSObject const& word) noexcept {
    return WordOf(word).empty() ? nullptr : FindAtom(WordOf(word));
}

// Describes what a schema has in place of a word.
String SaidText(POSObject const& value) {
    return IsOfType(&value, gStringType) ? ShownText(BytesOf(value)) : FoundText(value);
}

class RuleReader {
public:
    RuleReader(POSValidator const& validator, RuleProblems& problems) noexcept
        : fValidator(validator),
          fProblems(problems) {}

    SchemaRule Read(POSObject& source) {
        POSObject*& word = fRule.fParts[static_cast<std::size_t>(RuleKey::kType)];
        if (IsOfType(&source, gStringType)) {
            word = &source;
            ReadType(nullptr, source);
        } else if (KindOf(source) != ValueKind::kDictionary) {
            AddProblem(
                nullptr,
                {"says ", FoundText(source), ", which is neither a word nor a dictionary"});
        } else {
            ReadParts(static_cast<POSDict&>(source));
        }
        return fRule;
    }

private:
    void ReadParts(POSDict& source) {
        std::size_t position = 0;
        while (DictEntry const* const entry = source.fEntries.Next(position)) {
            ReadPart(*entry->fKey, entry->fValue);
        }
        POSObject* const word = fRule.Part(RuleKey::kType);
        if (!word) {
            AddProblem(nullptr, {"has no type"});
        } else if (ReadType(NameOf(RuleKey::kType), *word)) {
            for (Fit const& fit : kFits) {
                CheckFit(fit);
            }
            CheckAllowed();
            CheckBounds();
        }
        ReadExtraCheck();
    }

    void ReadPart(BIBStringAtom const& key, POSObject* value) {
        auto const* const name =
            std::find(std::begin(kKeyNames), std::end(kKeyNames), std::string_view(key.Text()));
        if (name == std::end(kKeyNames)) {
            AddProblem(
                key.Text(), {"says ", ShownText(key.Text()), ", which is not a key of a rule"});
        } else {
            fRule.fParts[name - std::begin(kKeyNames)] = value;
        }
    }

    // Resolves the word of a type. False if it is unknown.
    bool ReadType(char const* key, POSObject& word) {
        auto const* const kind =
            std::find(std::begin(kKindNames), std::end(kKindNames), WordOf(word));
        BIBStringAtom const* const atom = AtomOf(word);
        bool isKnown = true;
        if (kind != std::end(kKindNames)) {
            fRule.fType = static_cast<RuleType>(kind - std::begin(kKindNames));
        } else if ((fRule.fStructure = fValidator.FindStructure(atom))) {
            fRule.fType = RuleType::kStructure;
        } else {
            fRule.fType = RuleType::kCheck;
            fRule.fTypeCheck = fValidator.FindCheck(atom);
            isKnown = fRule.fTypeCheck.fProc != nullptr;
        }
        if (!isKnown) {
            AddProblem(
                key,
                {"says ", SaidText(word), ", which is not a kind, structure or registered check"});
        }
        return isKnown;
    }

    void CheckFit(Fit const& fit) {
        POSObject* const value = fRule.Part(fit.fKey);
        char const* const name = NameOf(fit.fKey);
        if (!value) {
            return;
        }
        if ((fit.fTypes & Bit(fRule.fType)) == 0) {
            AddProblem(name, {"says ", name, ", which applies only to ", fit.fFits});
        } else if (fit.fIsValue && !fit.fIsValue(*value)) {
            AddProblem(name, {"says ", FoundText(*value), ", which is not ", fit.fExpected});
        }
    }

    void CheckAllowed() {
        POSObject const* const allowed = fRule.Part(RuleKey::kIn);
        if (!allowed || !IsArray(*allowed) || (kListed & Bit(fRule.fType)) == 0) {
            return;
        }
        auto const& items = static_cast<POSArray const*>(allowed)->fItems;
        auto const odd = std::find_if(items.begin(), items.end(), [this](POSObject const* item) {
            return !IsOfRuleType(fRule, *item, ValidationMode::kDefaults);
        });
        if (items.empty()) {
            AddProblem(NameOf(RuleKey::kIn), {"says an empty array, which allows nothing"});
        } else if (items.size() > kMostAllowed) {
            AddProblem(NameOf(RuleKey::kIn), {"says an array of more than 1000 values"});
        } else if (odd != items.end()) {
            AddProblem(
                NameOf(RuleKey::kIn), {"allows ", FoundText(**odd), ", which is of another type"});
        }
    }

    void CheckBounds() {
        POSObject const* const min = fRule.Part(RuleKey::kMin);
        POSObject const* const max = fRule.Part(RuleKey::kMax);
        if (!min || !max || !IsBound(*min) || !IsBound(*max)) {
            return;
        }
        double const least = NumberOf(*min);
        double const greatest = NumberOf(*max);
        if (least > greatest) {
            AddProblem(
                NameOf(RuleKey::kMin),
                {"says a min of ",
                 NumberText(least),
                 ", which is greater than the max of ",
                 NumberText(greatest)});
        }
    }

    void ReadExtraCheck() {
        POSObject const* const name = fRule.Part(RuleKey::kCheck);
        if (!name) {
            return;
        }
        fRule.fExtraCheck = fValidator.FindCheck(AtomOf(*name));
        if (!fRule.fExtraCheck.fProc) {
            AddProblem(
                NameOf(RuleKey::kCheck),
                {"says ", SaidText(*name), ", which is not a registered check"});
        }
    }

    void AddProblem(char const* key, std::initializer_list<std::string_view> text) {
        fProblems.push_back({key, Join(text)});
    }

    POSValidator const& fValidator;
    RuleProblems& fProblems;
    SchemaRule fRule;
};

} // namespace

char const* NameOf(RuleKey key) noexcept {
    return kKeyNames[static_cast<std::size_t>(key)];
}

SchemaRule ReadRule(POSValidator const& validator, POSObject& source, RuleProblems& problems) {
    return RuleReader(validator, problems).Read(source);
}

POSObject* FindPart(POSObject const& source, char const* key) noexcept {
    return IsOfType(&source, gDictType)
               ? static_cast<POSDict const&>(source).fEntries.Get(FindAtom(key))
               : nullptr;
}

BIBStringAtom const* FindStructureName(POSValidator const& validator, POSObject& rule) noexcept {
    POSObject const* const word =
        IsOfType(&rule, gDictType) ? FindPart(rule, NameOf(RuleKey::kType)) : &rule;
    if (!word || IsKindName(WordOf(*word))) {
        return nullptr;
    }
    BIBStringAtom const* const name = AtomOf(*word);
    return validator.FindStructure(name) ? name : nullptr;
}

bool IsKindName(std::string_view name) noexcept {
    return std::find(std::begin(kKindNames), std::end(kKindNames), name) != std::end(kKindNames);
}

} // namespace bibrt
