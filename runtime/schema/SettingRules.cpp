#include "runtime/schema/SettingRules.h"

#include "api/BIBRuntime.h"
#include "format/SettingPath.h"
#include "runtime/objects/Errors.h"
#include "runtime/schema/SchemaText.h"

#include <algorithm>
#include <utility>

namespace bibrt {

namespace {

POSObject* FindEntry(POSObject const* dict, std::string_view key) noexcept {
    return IsOfType(dict, gDictType)
               ? static_cast<POSDict const*>(dict)->fEntries.Get(FindAtom(key))
               : nullptr;
}

// The value at a path in nested dictionaries; null if there is none.
POSObject* FindStored(POSObject& settings, std::string_view path) noexcept {
    POSObject* value = &settings;
    while (value && !path.empty()) {
        std::string_view const part = format::FirstPart(path);
        path.remove_prefix(std::min(path.size(), part.size() + 1));
        value = FindEntry(value, part);
    }
    return value;
}

} // namespace

POSObject* FindSettingRule(POSValidator const& validator, std::string_view path) {
    POSDict* structure = validator.FindStructure(validator.FindMainName());
    while (structure && !path.empty()) {
        std::string_view const part = format::FirstPart(path);
        POSObject* const required = part == kOptional ? nullptr : FindEntry(structure, part);
        POSObject* const rule =
            required ? required : FindEntry(FindPart(*structure, kOptional), part);
        if (!rule || path.size() == part.size()) {
            return rule;
        }
        path.remove_prefix(part.size() + 1);
        structure = validator.FindStructure(FindStructureName(validator, *rule));
    }
    return nullptr;
}

namespace {

bool IsGreater(double a, double b) noexcept {
    return a > b && !AreSame(a, b);
}

// A text in one line, in the encoding of the schema, cut at the end of a character.
String LineOf(std::string_view text) {
    constexpr std::size_t kLongest = 500;
    std::size_t end = std::min(text.size(), kLongest);
    while (end < text.size() && end > 0 &&
           (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80) {
        --end;
    }
    String line(text.substr(0, end));
    std::ranges::replace_if(
        line, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 0x7F; }, ' ');
    return line;
}

// A setting that a rule looks at, with its value or its default; null for neither.
struct Operand {
    SchemaRule fRule;
    POSObject const* fValue = nullptr;
    bool fIsStored = false;
};

struct KeptFinding {
    String fPath;
    String fText;
    bool fIsWarning;
    Vector<String> fConcerned;
};

class RuleWalk {
public:
    RuleWalk(POSValidator const& validator, POSObject& settings) noexcept
        : fValidator(validator),
          fSettings(settings) {}

    Vector<KeptFinding> Run() {
        POSObject const* const rules = FindEntry(fValidator.fSchema.Get(), kRules);
        if (IsOfType(rules, gArrayType)) {
            for (Ref<POSObject> const& rule : static_cast<POSArray const*>(rules)->fItems) {
                CheckRule(*rule);
            }
        }
        return std::move(fFindings);
    }

private:
    void CheckRule(POSObject const& rule) {
        fConcerned.clear();
        fRule = &rule;
        if (Matches(FindPart(rule, "when"))) {
            CheckThen(FindPart(rule, "then"));
            CheckOrdered(FindPart(rule, "ordered"));
            CheckDisjoint(FindPart(rule, "disjoint"));
            CheckExclusive(FindPart(rule, "exclusive"));
        }
    }

    // Whether all tests of a rule's condition hold. Its text, made on the way, has what is stored.
    bool Matches(POSObject const* when) {
        fCondition.clear();
        return ForAllTests(when, [this](std::string_view path, POSObject const& test) {
            Operand const operand = Look(path);
            if (!operand.fValue || !FailedTest(operand, test).empty()) {
                return false;
            }
            if (operand.fIsStored && !IsOrdered(path)) {
                fCondition.append(fCondition.empty() ? " where " : " and ")
                    .append(ConditionText(path, operand, test));
            }
            return true;
        });
    }

    // Whether the rule names the setting in its order, and so in its text anyway.
    bool IsOrdered(std::string_view path) const {
        bool isOrdered = false;
        ForEachPath(FindPart(*fRule, "ordered"), [&](std::string_view other) {
            isOrdered = isOrdered || other == path;
        });
        return isOrdered;
    }

    // A value that may be any but one is not shown: it may be a password.
    static String
    ConditionText(std::string_view path, Operand const& operand, POSObject const& test) {
        POSObject const* const other = FindPart(test, "not");
        return other ? Join({path, " is not ", Listed(operand, *other)})
                     : Join({path, " is ", ValueText(operand)});
    }

    void CheckThen(POSObject const* then) {
        ForAllTests(then, [this](std::string_view path, POSObject const& test) {
            Operand const operand = Look(path);
            String const failed = operand.fValue ? FailedTest(operand, test) : String();
            if (!failed.empty()) {
                Report(path, failed);
            }
            return true;
        });
    }

    void CheckOrdered(POSObject const* paths) {
        ForPair(paths, [this](std::string_view path, std::string_view other) {
            Operand const low = Look(path);
            Operand const high = Look(other);
            bool const areNumbers = IsNumber(low) && IsNumber(high);
            if (areNumbers && IsGreater(NumberOf(*low.fValue), NumberOf(*high.fValue))) {
                Report(
                    path,
                    Join(
                        {"expected at most ",
                         ValueText(high),
                         ", the value of ",
                         other,
                         ", found ",
                         ValueText(low)}));
            }
        });
    }

    void CheckDisjoint(POSObject const* paths) {
        ForPair(paths, [this](std::string_view path, std::string_view other) {
            Operand const some = Look(path);
            Operand const others = Look(other);
            if (IsArray(some) && IsArray(others)) {
                CheckDisjoint(path, ItemsOf(some), other, TextsIn(ItemsOf(others)));
            }
        });
    }

    // Reports the elements of some that are among others.
    void CheckDisjoint(
        std::string_view path,
        Vector<Ref<POSObject>> const& some,
        std::string_view other,
        TextSet const& others) {
        constexpr int kMost = 100; // of a list that is in the other one as a whole
        int count = 0;
        for (std::size_t i = 0; i < some.size() && count < kMost; ++i) {
            if (others.contains(BytesOf(*some[i]))) {
                ++count;
                String element(path);
                AppendIndexStep(element, i);
                Report(
                    element,
                    Join({"expected no element of ", other, ", found ", PlainText(*some[i])}));
            }
        }
    }

    void CheckExclusive(POSObject const* paths) {
        String first;
        String all;
        std::size_t count = 0;
        ForEachPath(paths, [&](std::string_view path) {
            Operand const operand = Look(path);
            if (operand.fValue && BytesOf(*operand.fValue) == "true") {
                first = count++ == 0 ? String(path) : first;
                all.append(all.empty() ? "" : " and ").append(path);
            }
        });
        if (count > 1) {
            Report(first, Join({"expected at most one to be true, found ", all}));
        }
    }

    // Calls visit(path, test) for each entry of a dictionary of tests, until it returns false. True
    // if it never does, and where there are no tests.
    template <class Visit>
    static bool ForAllTests(POSObject const* tests, Visit visit) {
        if (!IsOfType(tests, gDictType)) {
            return true;
        }
        std::size_t position = 0;
        while (DictEntry const* const entry =
                   static_cast<POSDict const*>(tests)->fEntries.Next(position)) {
            if (!visit(entry->fKey->Text(), *entry->fValue)) {
                return false;
            }
        }
        return true;
    }

    template <class Visit>
    static void ForEachPath(POSObject const* paths, Visit visit) {
        if (IsOfType(paths, gArrayType)) {
            for (Ref<POSObject> const& path : static_cast<POSArray const*>(paths)->fItems) {
                visit(BytesOf(*path));
            }
        }
    }

    template <class Visit>
    static void ForPair(POSObject const* paths, Visit visit) {
        Vector<std::string_view> both;
        ForEachPath(paths, [&](std::string_view path) { both.push_back(path); });
        if (both.size() == 2) {
            visit(both[0], both[1]);
        }
    }

    // A setting, which is noted as one that concerns the current rule.
    Operand Look(std::string_view path) {
        Operand operand;
        POSObject* const source = FindSettingRule(fValidator, path);
        if (!source) {
            return operand;
        }
        RuleProblems unused; // of the schema, which are reported elsewhere
        operand.fRule = ReadRule(fValidator, *source, unused);
        POSObject* const stored = FindStored(fSettings, path);
        operand.fIsStored = stored != nullptr;
        POSObject const* const value = stored ? stored : operand.fRule.Part(RuleKey::kDefault);
        auto const mode = stored ? ValidationMode::kSettings : ValidationMode::kDefaults;
        if (value && IsOfRuleType(operand.fRule, *value, mode)) {
            operand.fValue = value;
        }
        if (operand.fIsStored && std::ranges::find(fConcerned, path) == fConcerned.end()) {
            fConcerned.emplace_back(path);
        }
        return operand;
    }

    // What a test rejects about a value; empty if it holds. A test that is no dictionary is a value
    // that must be equal.
    static String FailedTest(Operand const& operand, POSObject const& test) {
        POSObject const* const is = IsOfType(&test, gDictType) ? FindPart(test, "is") : &test;
        POSObject const* const no = FindPart(test, "not");
        if (is && !IsCollection(is) && !IsAllowed(*is, *operand.fValue)) {
            return Join({"expected ", Listed(operand, *is), ", found ", ValueText(operand)});
        }
        if (no && IsAllowed(*no, *operand.fValue)) {
            return Join({"expected another value than ", Listed(operand, *no)});
        }
        SchemaRule limits;
        limits.fType =
            operand.fRule.fType == RuleType::kCheck ? RuleType::kAny : operand.fRule.fType;
        SetLimit(limits, RuleKey::kIn, test, &IsArrayValue);
        if (IsNumber(operand)) {
            SetLimit(limits, RuleKey::kMin, test, &IsNumberValue);
            SetLimit(limits, RuleKey::kMax, test, &IsNumberValue);
        }
        return PartsMessage(limits, *operand.fValue);
    }

    static void SetLimit(
        SchemaRule& limits,
        RuleKey key,
        POSObject const& test,
        bool (*isLimit)(POSObject const&) noexcept) noexcept {
        POSObject* const limit = FindPart(test, NameOf(key));
        if (limit && isLimit(*limit)) {
            limits.fParts[static_cast<std::size_t>(key)] = limit;
        }
    }

    static bool IsArrayValue(POSObject const& value) noexcept {
        return KindOf(value) == ValueKind::kArray;
    }
    static bool IsNumberValue(POSObject const& value) noexcept {
        return KindOf(value) == ValueKind::kNumber;
    }
    static bool IsNumber(Operand const& operand) noexcept {
        return operand.fValue && KindOf(*operand.fValue) == ValueKind::kNumber;
    }

    static bool IsArray(Operand const& operand) noexcept {
        return operand.fValue && IsArrayValue(*operand.fValue);
    }
    static Vector<Ref<POSObject>> const& ItemsOf(Operand const& array) noexcept {
        return static_cast<POSArray const*>(array.fValue)->fItems;
    }

    // The names and strings among items; other elements are not compared.
    static TextSet TextsIn(Vector<Ref<POSObject>> const& items) {
        TextSet texts;
        for (Ref<POSObject> const& item : items) {
            texts.insert(BytesOf(*item));
        }
        texts.erase(std::string_view());
        return texts;
    }

    static String Listed(Operand const& operand, POSObject const& value) {
        return ListedText(value, MarksOf(operand.fRule));
    }
    static String ValueText(Operand const& operand) {
        String text = Listed(operand, *operand.fValue);
        return operand.fIsStored ? text : text.append(" (the default)");
    }
    static String PlainText(POSObject const& value) {
        bool const isName = KindOf(value) == ValueKind::kName;
        return ListedText(value, isName ? Marks{"/", ""} : Marks{"(", ")"});
    }

    void Report(std::string_view path, std::string_view text) {
        if (fConcerned.empty()) {
            return;
        }
        POSObject const* const doc = FindPart(*fRule, NameOf(RuleKey::kDoc));
        POSObject const* const severity = FindPart(*fRule, "severity");
        String const help = doc ? LineOf(BytesOf(*doc)) : String();
        String const whole = Join({text, fCondition, help.empty() ? "" : ": ", help});
        bool const isWarning = severity && BytesOf(*severity) == "warning";
        fFindings.push_back({String(path), whole, isWarning, fConcerned});
    }

    POSValidator const& fValidator;
    POSObject& fSettings;
    Vector<KeptFinding> fFindings;
    POSObject const* fRule = nullptr; // the current one
    String fCondition;
    Vector<String> fConcerned;
};

} // namespace

void CheckRulesBetween(POSValidator const& validator, POSObject& settings, RuleListener& listener) {
    // A listener may change the settings and the schema, so it is called when the walk has ended.
    for (KeptFinding const& finding : RuleWalk(validator, settings).Run()) {
        listener.OnFinding({finding.fPath, finding.fText, finding.fIsWarning, finding.fConcerned});
    }
}

} // namespace bibrt

namespace {

// Passes findings to a host's procedure.
class HostListener final : public bibrt::RuleListener {
public:
    HostListener(BIBRuntimeRuleProc proc, void* client) noexcept : fProc(proc), fClient(client) {}

    void OnFinding(bibrt::RuleFinding const& finding) override {
        bibrt::String const path(finding.fPath);
        bibrt::String const text(finding.fText);
        bibrt::Vector<char const*> concerned;
        for (bibrt::String const& other : finding.fConcerned) {
            concerned.push_back(other.c_str());
        }
        fIsInCaller = true;
        fProc(
            path.c_str(),
            text.c_str(),
            finding.fIsWarning ? 1 : 0,
            concerned.data(),
            concerned.size(),
            fClient);
        fIsInCaller = false;
    }

    bool fIsInCaller = false;

private:
    BIBRuntimeRuleProc fProc;
    void* fClient;
};

} // namespace

extern "C" int
BIBRuntimeCheckRules(POSDict* schema, POSDict* settings, BIBRuntimeRuleProc proc, void* client) {
    if (!bibrt::IsOfType(schema, bibrt::gDictType) ||
        !bibrt::IsOfType(settings, bibrt::gDictType) || !proc) {
        return 0;
    }
    HostListener listener(proc, client);
    return bibrt::AtRow<int>(
        0,
        [&] {
            bibrt::Ref<POSValidator> const validator(
                bibrt::NewObject<POSValidator>(bibrt::Ref<POSDict>(schema)));
            bibrt::CheckRulesBetween(*validator, *settings, listener);
            return 1;
        },
        listener.fIsInCaller);
}
