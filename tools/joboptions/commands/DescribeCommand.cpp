// joboptions describe: the schema's rules for settings.
#include "format/SettingPath.h"
#include "tools/joboptions/commands/Command.h"

#include "tools/joboptions/commands/Files.h"
#include "tools/joboptions/json/JsonDocuments.h"
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

using pdfsettings::Rule;
using Rules = std::vector<Rule>;

// Whether key is the path of the setting, or of a dictionary around it.
bool IsChosenBy(std::string const& key, Rule const& rule) {
    std::string const& path = rule.Path();
    return path.starts_with(key) && (path.size() == key.size() || path[key.size()] == '/');
}

// Without an exponent, for people.
std::string BoundText(double number) {
    char digits[400];
    auto const result =
        std::to_chars(std::begin(digits), std::end(digits), number, std::chars_format::fixed);
    return std::string(digits, result.ptr);
}

std::string KindText(Rule const& rule) {
    return rule.KindName() +
           (rule.ElementKindName().empty() ? "" : " of " + rule.ElementKindName()) +
           (rule.Count() ? ", " + BoundText(*rule.Count()) + " elements" : "");
}

std::string RangeText(Rule const& rule) {
    if (rule.Minimum() && rule.Maximum()) {
        return fmt::format("{} to {}", BoundText(*rule.Minimum()), BoundText(*rule.Maximum()));
    }
    if (rule.Minimum()) {
        return fmt::format("{} or more", BoundText(*rule.Minimum()));
    }
    return rule.Maximum() ? fmt::format("{} or less", BoundText(*rule.Maximum())) : "";
}

// A labelled line; empty for an empty text.
std::string Line(char const* label, std::string const& text) {
    return text.empty() ? "" : fmt::format("  {:<9}{}\n", label, text);
}

std::string Paragraph(Rule const& rule, pdfsettings::Schema const& schema) {
    std::string constraints;
    for (pdfsettings::Constraint const& constraint : schema.ConstraintsOf(rule.Path())) {
        bool const isError = constraint.Level() == pdfsettings::Severity::kError;
        constraints += Line(isError ? "Rule" : "Advice", VisibleText(constraint.Text()));
    }
    return VisibleText(rule.Path()) + "\n" +
           (rule.Help().empty() ? "" : "  " + VisibleText(rule.Help()) + "\n") +
           Line("Kind", VisibleText(KindText(rule))) + Line("Allowed", CommaList(rule.Allowed())) +
           Line("Range", RangeText(rule)) +
           Line("Default", rule.Default() != nullptr ? OneLine(*rule.Default()) : "") +
           Line("Required", rule.IsRequired() ? "yes" : "") + constraints;
}

// A line for each setting: key and description, aligned.
std::string RuleLines(Rules const& rules) {
    std::size_t width = 0;
    for (Rule const& rule : rules) {
        width = Widened(width, VisibleText(rule.Path()));
    }
    std::string text;
    for (Rule const& rule : rules) {
        std::string const path = VisibleText(rule.Path());
        text += rule.Help().empty()
                    ? path + "\n"
                    : fmt::format("{}  {}\n", Padded(path, width), VisibleText(rule.Help()));
    }
    return text;
}

// A paragraph for each setting with its whole rule.
std::string RuleParagraphs(Rules const& rules, pdfsettings::Schema const& schema) {
    std::string text;
    for (Rule const& rule : rules) {
        text += (text.empty() ? "" : "\n") + Paragraph(rule, schema);
    }
    return text;
}

// All settings, group by group.
std::string GroupedLines(pdfsettings::Schema const& schema) {
    std::string text;
    auto const add = [&text](std::string const& heading, Rules const& rules) {
        if (!rules.empty()) {
            text += (text.empty() ? "" : "\n") + heading + (heading.empty() ? "" : "\n") +
                    RuleLines(rules);
        }
    };
    for (std::string const& group : schema.Groups()) {
        add("% " + VisibleText(group), schema.RulesOf(group));
    }
    Rules others;
    std::ranges::copy_if(schema.Rules(), std::back_inserter(others), [](Rule const& rule) {
        return rule.Group().empty();
    });
    add("", others);
    return text;
}

// Writes what settings are for and which values they may have: a line for each, or the whole rules
// of the named ones.
class DescribeCommand final : public Command {
public:
    DescribeCommand(CLI::App& program, Options& options)
        : Command(
              program,
              options,
              "describe",
              "Describe settings: meaning, kind, allowed values, default") {
        AddArgument(
            Parser(),
            "KEY",
            fKeys,
            "Key or path, a pattern such as 'Gray*', or a group, in any letter case; default: one "
            "line for each setting");
        Parser()
            .add_option(
                "--search", fSearch, "Find the settings whose description has all words of TEXT")
            ->type_name("TEXT");
        AddSchema(Parser(), options);
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer("Examples:\n"
                        "  joboptions describe\n"
                        "  joboptions describe ColorImageResolution ColorImageDict/QFactor\n"
                        "  joboptions describe 'gray*' fonts\n"
                        "  joboptions describe --search 'compression of grey images'\n"
                        "  joboptions describe --json CompatibilityLevel");
    }

    // Status::kDone, or Status::kNo if the schema lacks a key, or nothing is found. The other
    // settings are written in any case.
    Status Run() const override {
        pdfsettings::Schema const schema = ReadSchema(fOptions);
        Choice choice;
        if (fKeys.empty() && fSearch.empty()) {
            choice.fRules.assign(schema.Rules().begin(), schema.Rules().end());
        }
        for (std::string const& key : fKeys) {
            Choose(schema, key, choice);
        }
        if (!fSearch.empty()) {
            AddFound(schema.Search(fSearch), fSearch, schema, choice);
        }
        WriteResult(
            fOptions, fOptions.json ? AsJson(choice.fRules, schema) : AsText(choice, schema));
        return choice.fStatus;
    }

private:
    struct Choice {
        Rules fRules;
        bool fIsNamed = true; // each by its key or path
        Status fStatus = Status::kDone;
    };

    void Choose(pdfsettings::Schema const& schema, std::string const& key, Choice& choice) const {
        if (key.find_first_of("*?") != std::string::npos && schema.Find(key) == nullptr) {
            AddFound(schema.Matching(key), key, schema, choice);
            return;
        }
        std::string const path = PathOf(schema, key);
        std::size_t const before = choice.fRules.size();
        std::ranges::copy_if(
            schema.Rules(), std::back_inserter(choice.fRules), [&path](Rule const& each) {
                return IsChosenBy(path, each);
            });
        if (choice.fRules.size() == before) {
            AddFound(schema.RulesOf(schema.FindGroup(key)), key, schema, choice);
        }
    }

    // The path of the rule for a key, which may have another letter case.
    static std::string PathOf(pdfsettings::Schema const& schema, std::string const& key) {
        if (Rule const* const rule = schema.Find(key)) {
            return rule->Path();
        }
        auto const similar = schema.Matching(key);
        return similar.size() == 1 ? similar.front().Path() : key;
    }

    void AddFound(
        Rules const& found,
        std::string const& key,
        pdfsettings::Schema const& schema,
        Choice& choice) const {
        choice.fRules.insert(choice.fRules.end(), found.begin(), found.end());
        choice.fIsNamed = choice.fIsNamed && found.empty();
        if (found.empty()) {
            choice.fStatus = Status::kNo;
            ReportMissing(key, schema);
        }
    }

    std::string AsText(Choice const& choice, pdfsettings::Schema const& schema) const {
        if (fKeys.empty() && fSearch.empty()) {
            return GroupedLines(schema);
        }
        return choice.fIsNamed ? RuleParagraphs(choice.fRules, schema) : RuleLines(choice.fRules);
    }

    // Throws Failure for a default that is nested too deep for JSON.
    std::string AsJson(Rules const& rules, pdfsettings::Schema const& schema) const {
        try {
            return RulesDocument(rules, schema, fOptions.schema);
        } catch (Failure const& failure) {
            throw Failure(Status::kBadSchema, failure.what());
        }
    }

    void ReportMissing(std::string const& key, pdfsettings::Schema const& schema) const {
        if (key == fSearch || key.find_first_of("*?") != std::string::npos) {
            WriteError("no setting matches " + VisibleText(key), fOptions.quiet);
            return;
        }
        std::string const parent(format::ParentPath(key));
        std::string const name = schema.Suggest(key);
        std::string const meant = name.empty() || parent.empty() ? name : parent + "/" + name;
        WriteError(
            "the schema has no setting " + VisibleText(key) +
                (meant.empty() ? "" : "; did you mean " + VisibleText(meant) + "?"),
            fOptions.quiet);
    }

    std::vector<std::string> fKeys;
    std::string fSearch;
};

} // namespace

MakeCommand* const kMakeDescribeCommand = &Make<DescribeCommand>;

} // namespace joboptions
