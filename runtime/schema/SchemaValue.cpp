// Comparing a value with a rule, and the messages.
#include "runtime/schema/Schema.h"
#include "runtime/schema/SchemaText.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace bibrt {

namespace {

// In the order of RuleType, up to kStructure.
constexpr std::string_view kExpected[] = {
    "a boolean",
    "a number",
    "an integer",
    "a name",
    "a string",
    "a hexadecimal string",
    "an array",
    "a dictionary",
    "a value",
    "a dictionary"};
static_assert(std::size(kExpected) == static_cast<std::size_t>(RuleType::kCheck));

bool IsWhole(POSObject const& value) noexcept {
    return std::isfinite(NumberOf(value)) && std::trunc(NumberOf(value)) == NumberOf(value);
}

} // namespace

bool AreSame(double a, double b) noexcept {
    constexpr double kMax = std::numeric_limits<float>::max();
    return a == b || (std::abs(a) <= kMax && std::abs(b) <= kMax &&
                      static_cast<float>(a) == static_cast<float>(b));
}

bool IsAllowed(POSObject const& allowed, POSObject const& value) noexcept {
    if (KindOf(value) != ValueKind::kNumber) {
        return !IsCollection(&allowed) && KindOf(allowed) != ValueKind::kNumber &&
               BytesOf(allowed) == BytesOf(value);
    }
    return KindOf(allowed) == ValueKind::kNumber && AreSame(NumberOf(allowed), NumberOf(value));
}

Marks MarksOf(SchemaRule const& rule) noexcept {
    bool const isString = rule.fType == RuleType::kString;
    return isString                        ? Marks{"(", ")"}
           : rule.fType == RuleType::kName ? Marks{"/", ""}
                                           : Marks{"", ""};
}

namespace {

std::string_view ExpectedText(SchemaRule const& rule) noexcept {
    return kExpected[static_cast<std::size_t>(rule.fType)];
}

// " from 1 to 5"; empty for a rule without bounds.
String RangeText(SchemaRule const& rule) {
    POSObject const* const min = rule.Part(RuleKey::kMin);
    POSObject const* const max = rule.Part(RuleKey::kMax);
    String const least = min ? NumberText(NumberOf(*min)) : String();
    String const greatest = max ? NumberText(NumberOf(*max)) : String();
    return min && max ? Join({" from ", least, " to ", greatest})
           : min      ? Join({" of at least ", least})
           : max      ? Join({" of at most ", greatest})
                      : String();
}

// The text of the values that a rule allows; empty if it allows all of its type.
String LimitText(SchemaRule const& rule) {
    auto const* const allowed = static_cast<POSArray const*>(rule.Part(RuleKey::kIn));
    return allowed ? Join({" out of ", ListText(*allowed, MarksOf(rule))}) : RangeText(rule);
}

bool IsAmongAllowed(SchemaRule const& rule, POSObject const& value) noexcept {
    auto const* const allowed = static_cast<POSArray const*>(rule.Part(RuleKey::kIn));
    return !allowed ||
           std::any_of(allowed->fItems.begin(), allowed->fItems.end(), [&](POSObject const* item) {
               return IsAllowed(*item, value);
           });
}

bool IsWithinBounds(SchemaRule const& rule, POSObject const& value) noexcept {
    POSObject const* const min = rule.Part(RuleKey::kMin);
    POSObject const* const max = rule.Part(RuleKey::kMax);
    if (min && !(NumberOf(value) >= NumberOf(*min)) && !AreSame(NumberOf(value), NumberOf(*min))) {
        return false;
    }
    return !max || NumberOf(value) <= NumberOf(*max) || AreSame(NumberOf(value), NumberOf(*max));
}

bool HasCount(SchemaRule const& rule, POSObject const& value) noexcept {
    POSObject const* const count = rule.Part(RuleKey::kCount);
    return !count || NumberOf(*count) == static_cast<double>(CountChildren(value));
}

String AllowedMessage(SchemaRule const& rule, POSObject const& value) {
    auto const& allowed = static_cast<POSArray const&>(*rule.Part(RuleKey::kIn));
    Marks const marks = MarksOf(rule);
    return Join({ListedText(value, marks), " is not one of ", ListText(allowed, marks)});
}

String BoundsMessage(SchemaRule const& rule, POSObject const& value) {
    return Join(
        {"expected ",
         ExpectedText(rule),
         RangeText(rule),
         ", found ",
         NumberText(NumberOf(value))});
}

String CountMessage(SchemaRule const& rule, POSObject const& value) {
    double const count = NumberOf(*rule.Part(RuleKey::kCount));
    return Join(
        {"expected ",
         NumberText(count),
         count == 1 ? " element" : " elements",
         ", found ",
         NumberText(static_cast<double>(CountChildren(value)))});
}

} // namespace

bool IsOfRuleType(SchemaRule const& rule, POSObject const& value, ValidationMode mode) noexcept {
    ValueKind const kind = KindOf(value);
    bool const isText = mode == ValidationMode::kDefaults && IsOfType(&value, gStringType);
    switch (rule.fType) {
    case RuleType::kBoolean:
        return kind == ValueKind::kBoolean;
    case RuleType::kNumber:
        return kind == ValueKind::kNumber;
    case RuleType::kInteger:
        return kind == ValueKind::kNumber && IsWhole(value);
    case RuleType::kName:
        return kind == ValueKind::kName;
    case RuleType::kString:
        return kind == ValueKind::kString || isText;
    case RuleType::kHexString:
        return kind == ValueKind::kHexString || isText;
    case RuleType::kArray:
        return kind == ValueKind::kArray;
    case RuleType::kDictionary:
    case RuleType::kStructure:
        return kind == ValueKind::kDictionary;
    case RuleType::kAny:
    case RuleType::kCheck:
        break;
    }
    return true;
}

String TypeMessage(SchemaRule const& rule, std::string_view found) {
    return rule.fType == RuleType::kCheck
               ? CheckMessage(*rule.Part(RuleKey::kType), found)
               : Join({"expected ", ExpectedText(rule), LimitText(rule), ", found ", found});
}

String PartsMessage(SchemaRule const& rule, POSObject const& value) {
    if (!IsAmongAllowed(rule, value)) {
        return AllowedMessage(rule, value);
    }
    if (!IsWithinBounds(rule, value)) {
        return BoundsMessage(rule, value);
    }
    return HasCount(rule, value) ? String() : CountMessage(rule, value);
}

String CheckMessage(POSObject const& name, std::string_view found) {
    return Join(
        {"expected a value that the check ", ShownText(BytesOf(name)), " allows, found ", found});
}

} // namespace bibrt
