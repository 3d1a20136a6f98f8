#include "tools/joboptions/text/RuleText.h"

#include "tools/joboptions/text/Utf8.h"
#include "tools/joboptions/text/ValueText.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>
#include <iterator>

namespace joboptions {

using pdfsettings::SettingRule;

namespace {

// Keys beyond it do not push the help of all others to the right.
constexpr std::size_t kWidestKey = 40;

// For people, who like no exponents.
std::string BoundText(double number) {
    char digits[400];
    auto const result =
        std::to_chars(std::begin(digits), std::end(digits), number, std::chars_format::fixed);
    return std::string(digits, result.ptr);
}

std::string KindText(SettingRule const& rule) {
    return rule.kind + (rule.element.empty() ? "" : " of " + rule.element) +
           (rule.count ? ", " + BoundText(*rule.count) + " elements" : "");
}

std::string RangeText(SettingRule const& rule) {
    if (rule.least && rule.greatest) {
        return fmt::format("{} to {}", BoundText(*rule.least), BoundText(*rule.greatest));
    }
    if (rule.least) {
        return fmt::format("{} or more", BoundText(*rule.least));
    }
    return rule.greatest ? fmt::format("{} or less", BoundText(*rule.greatest)) : "";
}

// Nothing for an empty text.
std::string Line(char const* label, std::string const& text) {
    return text.empty() ? "" : fmt::format("  {:<9}{}\n", label, text);
}

std::string Paragraph(SettingRule const& rule) {
    return VisibleText(rule.key) + "\n" +
           (rule.help.empty() ? "" : "  " + VisibleText(rule.help) + "\n") +
           Line("Kind", VisibleText(KindText(rule))) + Line("Allowed", CommaList(rule.allowed)) +
           Line("Range", RangeText(rule)) +
           Line("Default", rule.standard ? OneLine(*rule.standard) : "") +
           Line("Required", rule.isRequired ? "yes" : "");
}

} // namespace

std::string RuleLines(std::vector<SettingRule> const& rules) {
    std::size_t width = 0;
    for (SettingRule const& rule : rules) {
        width = std::max(width, DisplayWidth(VisibleText(rule.key)));
    }
    width = std::min(width, kWidestKey);
    std::string text;
    for (SettingRule const& rule : rules) {
        std::string const key = VisibleText(rule.key);
        std::size_t const used = std::min(DisplayWidth(key), width);
        text +=
            rule.help.empty()
                ? key + "\n"
                : fmt::format(
                      "{}{}  {}\n", key, std::string(width - used, ' '), VisibleText(rule.help));
    }
    return text;
}

std::string RuleParagraphs(std::vector<SettingRule> const& rules) {
    std::string text;
    for (SettingRule const& rule : rules) {
        text += (text.empty() ? "" : "\n") + Paragraph(rule);
    }
    return text;
}

} // namespace joboptions
