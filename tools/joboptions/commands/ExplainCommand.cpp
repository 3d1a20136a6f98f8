// joboptions explain: each setting of a file with its meaning and its default.
#include "tools/joboptions/commands/Command.h"

#include "format/SettingPath.h"
#include "pdfsettings/Review.h"
#include "tools/joboptions/commands/Files.h"
#include "tools/joboptions/commands/ListCommands.h"
#include "tools/joboptions/commands/Terminal.h"
#include "tools/joboptions/json/JsonDocuments.h"
#include "tools/joboptions/text/Utf8.h"
#include "tools/joboptions/text/ValueText.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace joboptions {

namespace {

using pdfsettings::ExplainedSetting;

// The words of text in lines of at most width cells, as far as words allow, each after indent.
std::string Wrapped(std::string_view text, std::string const& indent, std::size_t width) {
    std::string lines;
    std::size_t used = 0; // cells of the last line
    while (!text.empty()) {
        std::string_view const word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(word.size() + 1, text.size()));
        std::size_t const cells = DisplayWidth(word);
        bool const fits = used != 0 && used + 1 + cells <= width;
        lines.append(fits ? " " : used == 0 ? "" : "\n").append(fits ? "" : indent).append(word);
        used = fits ? used + 1 + cells : DisplayWidth(indent) + cells;
    }
    return lines.append(lines.empty() ? "" : "\n");
}

// Values are cut to one line: long arrays would hide the other settings.
std::string ShortText(pdfsettings::Value const& value, std::size_t width) {
    std::string const text = OneLine(value);
    std::size_t const most = std::max<std::size_t>(width, 20);
    return DisplayWidth(text) <= most ? text : std::string(FittingPart(text, most - 3)) + "...";
}

// The text of explanations for a width of the terminal.
class Explanation {
public:
    Explanation(pdfsettings::Settings const& settings, bool color)
        : fSettings(settings),
          fWidth(TerminalWidth()),
          fColor(color) {
        for (auto const& findings : {settings.Validate(), settings.Warnings()}) {
            fFindings.insert(fFindings.end(), findings.begin(), findings.end());
        }
    }

    std::string Write(std::vector<ExplainedSetting> const& explained, bool withUnknown) {
        for (ExplainedSetting const& setting : explained) {
            WriteHeading(setting.rule.Group().empty() ? "Others" : setting.rule.Group());
            WriteSetting(setting);
        }
        for (auto const& [key, value] : fSettings.Values()) {
            if (withUnknown && fSettings.Rules().IsUnknown(key)) {
                WriteHeading("Not in the schema");
                WriteLine(key, ShortText(value, fWidth - std::min(fWidth, key.size() + 4)));
            }
        }
        return std::move(fText);
    }

private:
    void WriteHeading(std::string const& group) {
        if (group != fGroup) {
            fText += (fText.empty() ? "" : "\n") + VisibleText(group) + "\n";
            fGroup = group;
        }
    }

    void WriteLine(std::string const& label, std::string const& rest) {
        fText += "  " + Colored(VisibleText(label), kCyan, fColor) + ": " + rest + "\n";
    }

    // "Resolution: 300 (default 150)", the key with the description, and what is wrong.
    void WriteSetting(ExplainedSetting const& setting) {
        pdfsettings::Rule const& rule = setting.rule;
        std::size_t const taken = DisplayWidth(VisibleText(rule.Label())) + 30;
        std::string const value =
            setting.value ? ShortText(*setting.value, fWidth - std::min(fWidth, taken)) : "";
        WriteLine(rule.Label(), value + StateText(setting));
        std::string help = rule.Help().empty() ? rule.Path() : rule.Path() + ": " + rule.Help();
        std::ranges::replace(help, '\n', ' ');
        fText += Wrapped(VisibleText(help), "    ", fWidth);
        for (pdfsettings::Finding const& finding : fFindings) {
            if (IsOf(finding, rule.Path())) {
                bool const isError = finding.Level() == pdfsettings::Severity::kError;
                std::string const text = Wrapped(
                    (isError ? "error: " : "warning: ") + VisibleText(finding.Message()),
                    "    ",
                    fWidth);
                fText += text;
            }
        }
    }

    static std::string StateText(ExplainedSetting const& setting) {
        pdfsettings::Value const* const standard = setting.rule.Default();
        if (!setting.isStored) {
            return setting.value ? " (the default)" : "not set";
        }
        if (standard == nullptr) {
            return " (no default)";
        }
        return setting.isChanged ? " (default " + ShortText(*standard, 40) + ")" : "";
    }

    // Whether a finding is about a setting, or about an element of it.
    static bool IsOf(pdfsettings::Finding const& finding, std::string const& path) {
        std::string const& found = finding.Path();
        return found == path ||
               (found.starts_with(path + "/") &&
                format::PositionIn(format::FirstPart(found.substr(path.size() + 1))).has_value());
    }

    pdfsettings::Settings const& fSettings;
    std::vector<pdfsettings::Finding> fFindings;
    std::size_t fWidth;
    bool fColor;
    std::string fGroup;
    std::string fText;
};

// Shows the settings of a file with their meanings, group by group.
class ExplainCommand final : public Command {
public:
    ExplainCommand(CLI::App& program, Options& options)
        : Command(
              program,
              options,
              "explain",
              "Explain the settings of a file: meaning, value and default of each") {
        AddFile(Parser(), options, fFile);
        Parser().add_flag(
            "--changed", fIsChangedOnly, "Only settings that differ from the default");
        Parser().add_flag("--no-pager", fHasNoPager, "Do not show long output in a pager");
        AddOutput(Parser(), options, "Write the explanation to this file");
        AddSchema(Parser(), options);
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer("Examples:\n"
                        "  joboptions explain press.joboptions\n"
                        "  joboptions explain --changed press.joboptions\n"
                        "  joboptions explain --app Webrix 'Press Quality'");
    }

    Status Run() const override {
        RequireOneStandardInput({fFile}, fOptions);
        std::string const file = Locate(fFile, fOptions);
        auto const settings = ParseSettings(file, ReadBytes(file), ReadSchema(fOptions));
        auto const explained = Explained(settings);
        if (fOptions.json) {
            WriteResult(fOptions, ExplanationDocument(explained, file));
            return Status::kDone;
        }
        std::string const text =
            Explanation(settings, UseColor(fOptions)).Write(explained, !fIsChangedOnly);
        bool const isDirect = fHasNoPager || !fOptions.output.empty();
        isDirect ? WriteResult(fOptions, text) : WritePaged(text);
        return Status::kDone;
    }

private:
    std::vector<ExplainedSetting> Explained(pdfsettings::Settings const& settings) const {
        std::vector<ExplainedSetting> explained = Explain(settings);
        if (fIsChangedOnly) {
            std::erase_if(explained, [](ExplainedSetting const& each) { return !each.isChanged; });
        }
        // What is nested in a setting that is not there says nothing of the file.
        std::erase_if(explained, [](ExplainedSetting const& each) {
            return !each.isStored && each.rule.Path().find('/') != std::string::npos;
        });
        return explained;
    }

    std::string fFile;
    bool fIsChangedOnly = false;
    bool fHasNoPager = false;
};

} // namespace

MakeCommand* const kMakeExplainCommand = &Make<ExplainCommand>;

} // namespace joboptions
