// joboptions describe: what the schema says of settings.
#include "tools/joboptions/commands/Command.h"

#include "tools/joboptions/commands/Files.h"
#include "tools/joboptions/json/JsonDocuments.h"
#include "tools/joboptions/text/KnownKeys.h"
#include "tools/joboptions/text/Utf8.h"
#include "tools/joboptions/text/ValueText.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <fmt/format.h>
#include <iterator>
#include <string>
#include <vector>

namespace joboptions {

namespace {

using pdfsettings::SettingRule;

// Whether key is the setting's, or that of one it is nested in.
bool IsChosenBy(std::string const& key, SettingRule const& rule) {
    bool const isNested = rule.key.size() > key.size() &&
                          (rule.key[key.size()] == '/' || rule.key[key.size()] == '[');
    return rule.key.starts_with(key) && (isNested || rule.key.size() == key.size());
}

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

// A line for each setting: its key and its help, aligned.
std::string RuleLines(std::vector<SettingRule> const& rules) {
    std::size_t width = 0;
    for (SettingRule const& rule : rules) {
        width = Widened(width, VisibleText(rule.key));
    }
    std::string text;
    for (SettingRule const& rule : rules) {
        std::string const key = VisibleText(rule.key);
        text += rule.help.empty()
                    ? key + "\n"
                    : fmt::format("{}  {}\n", Padded(key, width), VisibleText(rule.help));
    }
    return text;
}

// A paragraph for each setting with all that there is to say of it.
std::string RuleParagraphs(std::vector<SettingRule> const& rules) {
    std::string text;
    for (SettingRule const& rule : rules) {
        text += (text.empty() ? "" : "\n") + Paragraph(rule);
    }
    return text;
}

// Writes what settings are for and what they may hold: a line for each, or all that the schema says
// of the ones that are named.
class DescribeCommand final : public Command {
public:
    DescribeCommand(CLI::App& program, Options& options)
        : Command(
              program, options, "describe", "Say what settings are for and what they may hold") {
        AddArgument(
            Parser(), "KEY", fKeys, "The settings; without any, a line for each that there is");
        AddSchema(Parser(), options);
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer("Examples:\n"
                        "  joboptions describe\n"
                        "  joboptions describe ColorImageResolution ColorImageDict/QFactor\n"
                        "  joboptions describe --json CompatibilityLevel");
    }

    // Status::kDone, or Status::kNo when the schema lacks a key: the others are written all the
    // same.
    Status Run() const override {
        pdfsettings::Component const component;
        auto const rules = ReadSchema(component, fOptions).Settings();
        Status status = Status::kDone;
        auto const chosen = fKeys.empty() ? rules : Choose(rules, status);
        WriteResult(fOptions, fOptions.json ? AsJson(chosen) : AsText(chosen));
        return status;
    }

private:
    std::vector<SettingRule> Choose(std::vector<SettingRule> const& rules, Status& status) const {
        std::vector<SettingRule> chosen;
        for (std::string const& key : fKeys) {
            std::size_t const before = chosen.size();
            std::ranges::copy_if(
                rules, std::back_inserter(chosen), [&key](SettingRule const& rule) {
                    return IsChosenBy(key, rule);
                });
            if (chosen.size() == before) {
                status = Status::kNo;
                ReportMissing(key, rules);
            }
        }
        return chosen;
    }

    std::string AsText(std::vector<SettingRule> const& rules) const {
        return fKeys.empty() ? RuleLines(rules) : RuleParagraphs(rules);
    }

    // A default may be nested too deep for JSON.
    std::string AsJson(std::vector<SettingRule> const& rules) const {
        try {
            return RulesDocument(rules, fOptions.schema);
        } catch (Failure const& failure) {
            throw Failure(Status::kBadSchema, failure.what());
        }
    }

    void ReportMissing(std::string const& key, std::vector<SettingRule> const& rules) const {
        std::vector<std::string> keys;
        std::ranges::transform(rules, std::back_inserter(keys), &SettingRule::key);
        std::string const hint = MeantText(Nearest(key, keys));
        WriteError("the schema has no setting " + VisibleText(key) + hint, fOptions.quiet);
    }

    std::vector<std::string> fKeys;
};

} // namespace

MakeCommand* const kMakeDescribeCommand = &Make<DescribeCommand>;

} // namespace joboptions
