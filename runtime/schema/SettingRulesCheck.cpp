// Validates the rules between settings of a schema.
#include "runtime/schema/SchemaText.h"
#include "runtime/schema/SettingRules.h"

#include <algorithm>

namespace bibrt {

namespace {

constexpr std::string_view kRequirements[] = {"then", "ordered", "disjoint", "exclusive"};

class RulesCheck {
public:
    RulesCheck(POSValidator const& validator, MessageSink& sink, String& path) noexcept
        : fValidator(validator),
          fSink(sink),
          fPath(path) {}

    void CheckRule(POSObject const& rule) {
        if (KindOf(rule) != ValueKind::kDictionary) {
            Report(Join({"says ", FoundText(rule), ", which is not a dictionary"}));
            return;
        }
        std::size_t requirements = 0;
        std::size_t position = 0;
        while (DictEntry const* const entry =
                   static_cast<POSDict const&>(rule).fEntries.Next(position)) {
            std::string_view const key = entry->fKey->Text();
            PathStep const step(fPath, key);
            requirements +=
                std::ranges::find(kRequirements, key) == std::end(kRequirements) ? 0U : 1U;
            CheckPart(key, *entry->fValue);
        }
        if (requirements != 1) {
            Report("says not exactly one of then, ordered, disjoint and exclusive");
        }
    }

private:
    void CheckPart(std::string_view key, POSObject const& value) {
        if (key == "when" || key == "then") {
            CheckTests(value);
        } else if (key == "ordered") {
            CheckPaths(value, {"number", "integer"}, /*mustBePair=*/true);
        } else if (key == "disjoint") {
            CheckPaths(value, {"array"}, /*mustBePair=*/true);
        } else if (key == "exclusive") {
            CheckPaths(value, {"boolean"}, /*mustBePair=*/false);
        } else if (key == "severity") {
            if (BytesOf(value) != "error" && BytesOf(value) != "warning") {
                Report(Join({"says ", FoundText(value), ", which is not error or warning"}));
            }
        } else if (key != NameOf(RuleKey::kDoc)) {
            Report(Join({"says ", ShownText(key), ", which is not a key of a rule"}));
        } else if (!IsOfType(&value, gStringType)) {
            Report(Join({"says ", FoundText(value), ", which is not a text"}));
        }
    }

    void CheckTests(POSObject const& tests) {
        if (KindOf(tests) != ValueKind::kDictionary) {
            Report(Join({"says ", FoundText(tests), ", which is not a dictionary"}));
            return;
        }
        if (CountChildren(tests) == 0) {
            Report("has no test");
        }
        std::size_t position = 0;
        while (DictEntry const* const entry =
                   static_cast<POSDict const&>(tests).fEntries.Next(position)) {
            PathStep const step(fPath, entry->fKey->Text());
            if (POSObject* const rule = FindSettingRule(fValidator, entry->fKey->Text())) {
                CheckTest(*rule, *entry->fValue);
            } else {
                Report("says a setting that the schema does not have");
            }
        }
    }

    // A test has the parts of a rule that limit a value, or a value that must, or must not, be
    // there.
    void CheckTest(POSObject& setting, POSObject const& test) {
        RuleProblems problems;
        SchemaRule const rule = ReadRule(fValidator, setting, problems);
        if (!problems.empty()) {
            return; // which is reported where the setting is
        }
        if (KindOf(test) != ValueKind::kDictionary) {
            CheckValue(rule, test);
            return;
        }
        std::size_t position = 0;
        while (DictEntry const* const entry =
                   static_cast<POSDict const&>(test).fEntries.Next(position)) {
            PathStep const step(fPath, entry->fKey->Text());
            CheckPartOfTest(rule, entry->fKey->Text(), *entry->fValue);
        }
        POSObject const* const min = FindPart(test, NameOf(RuleKey::kMin));
        POSObject const* const max = FindPart(test, NameOf(RuleKey::kMax));
        if (min && max && KindOf(*min) == ValueKind::kNumber &&
            KindOf(*max) == ValueKind::kNumber && NumberOf(*min) > NumberOf(*max)) {
            Report("has a min that is greater than its max");
        }
    }

    void CheckPartOfTest(SchemaRule const& rule, std::string_view key, POSObject const& value) {
        if (key == "is" || key == "not") {
            CheckValue(rule, value);
        } else if (key == "min" || key == "max") {
            CheckBound(rule, value);
        } else if (key == "in" && IsOfType(&value, gArrayType) && CountChildren(value) != 0) {
            for (Ref<POSObject> const& allowed : static_cast<POSArray const&>(value).fItems) {
                CheckValue(rule, *allowed);
            }
        } else {
            Report(
                key == "in" ? String("is not an array of values")
                            : Join({"says ", ShownText(key), ", which is not a key of a test"}));
        }
    }

    void CheckValue(SchemaRule const& rule, POSObject const& value) {
        if (IsCollection(&value) || !IsOfRuleType(rule, value, ValidationMode::kDefaults)) {
            Report(Join({"says ", FoundText(value), ", which is not a value of this setting"}));
        }
    }

    void CheckBound(SchemaRule const& rule, POSObject const& value) {
        if (rule.fType != RuleType::kNumber && rule.fType != RuleType::kInteger) {
            Report("applies only to numbers");
        } else if (KindOf(value) != ValueKind::kNumber) {
            Report(Join({"says ", FoundText(value), ", which is not a number"}));
        }
    }

    // Settings of one of these types.
    void CheckPaths(
        POSObject const& paths, std::initializer_list<std::string_view> types, bool mustBePair) {
        std::size_t const count = IsOfType(&paths, gArrayType) ? CountChildren(paths) : 0;
        if (mustBePair ? count != 2 : count < 2) {
            Report(mustBePair ? "is not an array of two settings" : "is not an array of settings");
            return;
        }
        TextSet named;
        for (Ref<POSObject> const& path : static_cast<POSArray const&>(paths).fItems) {
            CheckPath(*path, types);
            if (!named.insert(BytesOf(*path)).second) {
                Report(Join({"says ", FoundText(*path), " twice"}));
            }
        }
    }

    void CheckPath(POSObject const& path, std::initializer_list<std::string_view> types) {
        POSObject* const rule = FindSettingRule(fValidator, BytesOf(path));
        POSObject const* const type =
            rule && IsOfType(rule, gDictType) ? FindPart(*rule, NameOf(RuleKey::kType)) : rule;
        if (!type || std::ranges::find(types, BytesOf(*type)) == types.end()) {
            Report(Join(
                {"says ", FoundText(path), ", which is not a setting of type ", *types.begin()}));
        }
    }

    void Report(std::string_view text) { fSink.Report(fPath, text); }

    POSValidator const& fValidator;
    MessageSink& fSink;
    String& fPath;
};

} // namespace

void CheckRulesOfSchema(
    POSValidator const& validator, POSObject const& rules, MessageSink& sink, String& path) {
    RulesCheck check(validator, sink, path);
    ForEachElement(rules, path, [&](POSObject const& rule) { check.CheckRule(rule); });
}

} // namespace bibrt
