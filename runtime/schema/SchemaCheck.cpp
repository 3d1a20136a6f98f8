// Validates a schema itself.
#include "runtime/schema/Schema.h"
#include "runtime/schema/SchemaText.h"
#include "runtime/schema/SettingRules.h"

#include <string>
#include <unordered_set>

namespace bibrt {

namespace {

using AtomSet = std::unordered_set<
    BIBStringAtom const*,
    std::hash<BIBStringAtom const*>,
    std::equal_to<>,
    CallerAllocator<BIBStringAtom const*>>;

// Calls visit(entry) for each entry of dict.
template <class Visit>
void ForEachEntry(POSDict const& dict, Visit visit) {
    std::size_t position = 0;
    while (DictEntry const* const entry = dict.fEntries.Next(position)) {
        visit(*entry);
    }
}

// Calls visit(rule) for each rule of structure, but not for the rules of elements.
template <class Visit>
void ForEachRule(POSDict const& structure, Visit visit) {
    ForEachEntry(structure, [&](DictEntry const& entry) {
        if (std::string_view(entry.fKey->Text()) != kOptional) {
            visit(*entry.fValue);
        }
    });
    POSObject const* const optional = FindPart(structure, kOptional);
    if (IsOfType(optional, gDictType)) {
        ForEachEntry(*static_cast<POSDict const*>(optional), [&](DictEntry const& entry) {
            visit(*entry.fValue);
        });
    }
}

POSObject* ElementRule(POSObject const& rule) noexcept {
    return FindPart(rule, NameOf(RuleKey::kOf));
}

// Whether following the rules of elements from rule leads to a cycle. Each rule is compared with a
// marked one, and the mark moves at steps that are powers of two: so a cycle that does not include
// the first rule is found too.
bool ContainsItself(POSObject& rule) noexcept {
    POSObject const* mark = &rule;
    unsigned long steps = 0;
    unsigned long nextMark = 1;
    for (POSObject* next = ElementRule(rule); next; next = ElementRule(*next)) {
        if (next == mark) {
            return true;
        }
        if (++steps == nextMark) {
            mark = next;
            nextMark *= 2;
        }
    }
    return false;
}

class SchemaCheck {
public:
    SchemaCheck(POSValidator const& validator, MessageSink& sink) noexcept
        : fValidator(validator),
          fSink(sink) {}

    void Run() {
        ForEachEntry(*fValidator.fSchema, [this](DictEntry const& entry) {
            PathStep const step(fPath, entry.fKey->Text());
            std::string_view const key = entry.fKey->Text();
            bool const isArray = KindOf(*entry.fValue) == ValueKind::kArray;
            if (isArray && key == kRules) {
                CheckRulesOfSchema(fValidator, *entry.fValue, fSink, fPath);
            } else {
                isArray&& key == kGroups ? CheckGroups(*entry.fValue) : CheckStructure(entry);
            }
        });
        CheckReach();
    }

private:
    void CheckStructure(DictEntry const& entry) {
        if (IsKindName(entry.fKey->Text())) {
            Report(Join(
                {"says ", entry.fKey->Text(), ", which is a kind and cannot name a structure"}));
        }
        if (KindOf(*entry.fValue) != ValueKind::kDictionary) {
            Report(Join({"says ", FoundText(*entry.fValue), ", which is not a structure"}));
            return;
        }
        auto const& structure = static_cast<POSDict const&>(*entry.fValue);
        ForEachEntry(structure, [this](DictEntry const& setting) {
            if (std::string_view(setting.fKey->Text()) != kOptional) {
                PathStep const step(fPath, setting.fKey->Text());
                CheckRules(*setting.fValue);
            }
        });
        CheckOptional(structure);
    }

    void CheckOptional(POSDict const& structure) {
        POSObject const* const optional = FindPart(structure, kOptional);
        if (!optional) {
            return;
        }
        PathStep const step(fPath, kOptional);
        if (KindOf(*optional) != ValueKind::kDictionary) {
            Report(Join({"says ", FoundText(*optional), ", which is not a dictionary"}));
            return;
        }
        ForEachEntry(static_cast<POSDict const&>(*optional), [&](DictEntry const& setting) {
            char const* const key = setting.fKey->Text();
            PathStep const keyStep(fPath, key);
            if (std::string_view(key) != kOptional && structure.fEntries.Get(setting.fKey)) {
                Report(Join({"says ", ShownText(key), ", which is also a required setting"}));
            }
            CheckRules(*setting.fValue);
        });
    }

    // Checks a rule, the rule of its elements, and so on.
    void CheckRules(POSObject& source) {
        if (ContainsItself(source)) {
            Report("says a rule that contains itself");
            return;
        }
        std::size_t const length = fPath.size();
        for (POSObject* rule = &source; rule && CheckRule(*rule); rule = ElementRule(*rule)) {
            AppendKeyStep(fPath, NameOf(RuleKey::kOf));
        }
        fPath.resize(length);
    }

    // Checks one rule. True if it is a rule for arrays, whose rule of elements is checked next.
    bool CheckRule(POSObject& source) {
        RuleProblems problems;
        SchemaRule const rule = ReadRule(fValidator, source, problems);
        for (RuleProblem const& problem : problems) {
            std::size_t const length = fPath.size();
            if (problem.fKey) {
                AppendKeyStep(fPath, problem.fKey);
            }
            Report(problem.fText);
            fPath.resize(length);
        }
        CheckUnused(rule, problems.empty());
        return rule.fType == RuleType::kArray;
    }

    // Checks the parts that validation does not use: default, doc and label.
    void CheckUnused(SchemaRule const& rule, bool isSound) {
        POSObject* const defaultValue = rule.Part(RuleKey::kDefault);
        if (defaultValue && isSound) {
            PathStep const step(fPath, NameOf(RuleKey::kDefault));
            String const path(PathEnd(fPath));
            ValidateValue(
                fValidator, fSink, ValidationMode::kDefaults, rule, *defaultValue, path, path);
        }
        for (RuleKey const key : {RuleKey::kDoc, RuleKey::kLabel}) {
            if (POSObject const* const text = rule.Part(key)) {
                PathStep const step(fPath, NameOf(key));
                CheckText(*text);
            }
        }
    }

    void CheckText(POSObject const& value) {
        if (!IsOfType(&value, gStringType)) {
            Report(Join({"says ", FoundText(value), ", which is not a text"}));
        }
    }

    void CheckGroups(POSObject const& groups) {
        AtomSet grouped;
        ForEachElement(groups, fPath, [&](POSObject const& group) {
            POSObject const* const label = FindPart(group, "label");
            POSObject const* const settings = FindPart(group, "settings");
            if (!label || !settings || KindOf(*settings) != ValueKind::kArray) {
                Report("says a group that is not a dictionary with a label and an array settings");
                return;
            }
            {
                PathStep const step(fPath, "label");
                CheckText(*label);
            }
            PathStep const step(fPath, "settings");
            ForEachElement(
                *settings, fPath, [&](POSObject const& name) { CheckGrouped(name, grouped); });
        });
    }

    // A group names settings of the main structure, each at most once.
    void CheckGrouped(POSObject const& name, AtomSet& grouped) {
        BIBStringAtom const* const atom = IsOfType(&name, gStringType)
                                              ? FindAtom(static_cast<POSString const&>(name).View())
                                              : nullptr;
        BIBStringAtom const* const main = fValidator.FindMainName();
        POSDict const* const structure = main ? fValidator.FindStructure(main) : nullptr;
        POSObject const* const optional = structure ? FindPart(*structure, kOptional) : nullptr;
        bool const isSetting = atom && structure &&
                               (structure->fEntries.Get(atom) ||
                                (IsOfType(optional, gDictType) &&
                                 static_cast<POSDict const*>(optional)->fEntries.Get(atom)));
        if (!isSetting) {
            Report(Join({"says ", FoundText(name), ", which is not a setting"}));
        } else if (!grouped.insert(atom).second) {
            Report(Join({"says ", FoundText(name), ", which is in a group already"}));
        }
    }

    void CheckReach() {
        BIBStringAtom const* const main = fValidator.FindMainName();
        if (!main) {
            return;
        }
        AtomSet const reached = FindReached(main);
        ForEachEntry(*fValidator.fSchema, [&](DictEntry const& entry) {
            bool const isStructure =
                fValidator.FindStructure(entry.fKey) && !IsKindName(entry.fKey->Text());
            if (isStructure && reached.count(entry.fKey) == 0) {
                PathStep const step(fPath, entry.fKey->Text());
                Report(Join({"cannot be reached from ", ShownText(main->Text())}));
            }
        });
    }

    AtomSet FindReached(BIBStringAtom const* main) const {
        AtomSet reached;
        Vector<BIBStringAtom const*> waiting;
        auto const reach = [&](BIBStringAtom const* name) {
            if (name && reached.insert(name).second) {
                waiting.push_back(name);
            }
        };
        auto const reachByRule = [&](POSObject& source) {
            bool const isEndless = ContainsItself(source);
            for (POSObject* rule = &source; rule && !isEndless; rule = ElementRule(*rule)) {
                reach(FindStructureName(fValidator, *rule));
            }
        };
        reach(main);
        while (!waiting.empty()) {
            POSDict const& structure = *fValidator.FindStructure(waiting.back());
            waiting.pop_back();
            ForEachRule(structure, reachByRule);
        }
        return reached;
    }

    void Report(std::string_view text) { fSink.Report(fPath, text); }

    POSValidator const& fValidator;
    MessageSink& fSink;
    String fPath;
};

} // namespace

void CheckSchema(POSValidator const& validator, MessageSink& sink) {
    SchemaCheck(validator, sink).Run();
}

} // namespace bibrt
