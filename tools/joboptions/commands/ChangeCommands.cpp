// joboptions set and unset: changes of a file in its own text, validated, shown and saved.
#include "tools/joboptions/commands/Command.h"

#include "pdfsettings/Document.h"
#include "pdfsettings/Error.h"
#include "pdfsettings/Path.h"
#include "pdfsettings/Splice.h"
#include "tools/joboptions/commands/Assignments.h"
#include "tools/joboptions/commands/Files.h"
#include "tools/joboptions/commands/ListCommands.h"
#include "tools/joboptions/json/JsonDocuments.h"
#include "tools/joboptions/text/Differences.h"
#include "tools/joboptions/text/Findings.h"
#include "tools/joboptions/text/KnownKeys.h"
#include "tools/joboptions/text/Utf8.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>
#include <iterator>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace joboptions {

using pdfsettings::Dictionary;
using pdfsettings::Finding;

namespace {

// A settings file that is being changed, and what it is validated with.
struct Editing {
    pdfsettings::Component const& fComponent;
    pdfsettings::Schema const& fSchema;
    std::string const& fFile;
    std::string const& fText;
};

// The settings of a file before and after a change.
struct Change {
    Dictionary fBefore;
    Dictionary fAfter;
    std::vector<Finding> fFindings; // faults of the result
    std::vector<Finding> fWarnings; // what may be meant otherwise
    std::string fText;              // of the result; not looked at when it has faults
};

// A command that changes settings of FILE: all that is asked for or, if the schema refuses the
// result, nothing.
class ChangeCommand : public Command {
public:
    // Status::kDone, or Status::kRefused with all faults when the schema does not allow the result.
    // The file stays locked while it is changed in its place.
    Status Run() const override {
        RequireOneStandardInput({fFile}, fOptions);
        pdfsettings::Component const component;
        std::string const file = LocateForChange(component, fFile, fOptions);
        pdfsettings::Schema const schema = ReadSchema(component, fOptions);
        return ChangeFile(file, fOptions, [&](std::string const& text, SaveText const& save) {
            Finish(Make({component, schema, file, text}), file, save);
            return Status::kDone;
        });
    }

protected:
    ChangeCommand(CLI::App& program, Options& options, char const* name, char const* purpose)
        : Command(program, options, name, purpose) {
        AddFile(Parser(), options, fFile);
    }

    // The options, which come after the arguments.
    void AddChangeOptions(Options& options) {
        AddOutput(Parser(), options, "Write the changed settings there, and leave FILE as it is");
        AddDryRun(Parser(), options);
        AddSaving(Parser(), options);
        AddSchema(Parser(), options);
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
    }

    // What is asked for. Throws Failure when it cannot be understood or made.
    virtual Change Make(Editing const& editing) const = 0;

private:
    // Shows the change, or saves it. Throws Failure with Status::kRefused for a result with faults,
    // with Status::kWrongCall when standard output would have to take both JSON and the settings,
    // and as save.
    void Finish(Change const& change, std::string const& file, SaveText const& save) const {
        RequireRoom(file, fOptions);
        auto const differences = Compare(change.fBefore, change.fAfter);
        if (fOptions.json) {
            WriteOutput(ChangeDocument(differences, change.fFindings, change.fWarnings, file));
        }
        for (auto const& [key, message] : change.fWarnings) {
            WriteWarning(VisibleText(key) + ": " + message, fOptions.quiet);
        }
        std::vector<std::string> faults;
        for (auto const& [key, message] : change.fFindings) {
            faults.push_back(
                fmt::format("{}: {}: {}", InputName(file), VisibleText(key), VisibleText(message)));
        }
        FailIfAny(Status::kRefused, faults);
        if (!fOptions.dryRun) {
            save(change.fText);
            return;
        }
        RequireReplaceable(file, fOptions);
        WriteOutput(fOptions.json ? "" : DifferencesText(differences, UseColor(fOptions.color)));
    }

    std::string fFile;
};

// Says of those findings that settings had before their change that they are old.
void MarkOldFindings(pdfsettings::Settings const& settings, std::vector<Finding>& findings) {
    if (findings.empty()) {
        return;
    }
    std::set<std::pair<std::string, std::string>> before;
    for (Finding& old : settings.Validate()) {
        before.emplace(std::move(old.key), std::move(old.message));
    }
    for (Finding& finding : findings) {
        bool const isOld = before.contains({finding.key, finding.message});
        finding.message += isOld ? " (as before the change)" : "";
    }
}

// Makes sure that text gives those settings. Throws Failure with Status::kRefused, which names file
// and says what to do instead, when it does not.
void RequireSettings(
    pdfsettings::Component const& component,
    std::string const& file,
    std::string const& text,
    pdfsettings::Dictionary const& settings,
    char const* instead) {
    try {
        if (pdfsettings::Settings::FromText(component, text).Values() == settings) {
            return;
        }
    } catch (pdfsettings::Error const&) {
        // Said below.
    }
    Fail(
        Status::kRefused,
        file,
        fmt::format("this change cannot be made in its text so that it reads back; {}", instead));
}

// The text with the values of all assignments. A text without settings gets some.
std::string Splice(std::string text, std::vector<ValueText> const& values) {
    if (!pdfsettings::Document(text).Body()) {
        text += (text.empty() || text.ends_with('\n') ? "" : "\n");
        text += "<<\n>> setalembicorparams\n";
    }
    for (auto const& [path, value] : values) {
        if (auto changed = WithValue(pdfsettings::Document(text), path, value)) {
            text = std::move(*changed);
        }
    }
    return text;
}

Dictionary Changed(Dictionary values, Dictionary const& changes) {
    for (std::size_t place = 0; place < changes.Size(); ++place) {
        values.Set(changes.KeyAt(place), changes.ValueAt(place));
    }
    return values;
}

void AddHints(
    std::vector<Finding>& findings,
    Dictionary const& values,
    std::vector<pdfsettings::SettingRule> const& rules) {
    for (std::size_t i = 0; i < std::min(findings.size(), kMostHints); ++i) {
        findings[i].message += NameHint(values, rules, findings[i]);
    }
}

// Changes values in a file, all of them or, if the schema refuses a single one, none.
class SetCommand final : public ChangeCommand {
public:
    SetCommand(CLI::App& program, Options& options)
        : ChangeCommand(
              program, options, "set", "Change settings of a file, if all new values are allowed") {
        AddArgument(
            Parser(),
            "KEY=VALUE",
            fAssignments,
            "A key, as for get, and a value as it stands in a file: true, 1.5, /Name, (text), "
            "[ 1 2 ]")
            ->required();
        AddChangeOptions(options);
        Parser().footer(
            "Examples:\n"
            "  joboptions set office.joboptions ColorImageResolution=150\n"
            "  joboptions set -n office.joboptions ColorImageDict/QFactor=0.76\n"
            "  joboptions set office.joboptions 'NeverEmbed=[ /Courier ]' -o new.joboptions");
    }

private:
    Change Make(Editing const& editing) const override {
        auto const& [component, schema, file, text] = editing;
        auto settings = ParseSettings(component, file, text, schema.Text());
        Dictionary const before = settings.Values();
        auto const& rules = schema.Settings();
        auto const assignments = ReadAssignments(component, before, rules, fAssignments);
        auto findings = settings.Set(assignments.fChanges);
        MarkOldFindings(settings, findings);
        AddHints(findings, Changed(before, assignments.fChanges), rules);
        Dictionary const after = settings.Values();
        std::string const changed = findings.empty() ? Splice(text, assignments.fTexts) : text;
        RequireSettings(
            component,
            file,
            changed,
            after,
            "an empty dictionary can only stand last, and other files need joboptions fmt first");
        // A misspelled key is allowed, for settings may hold what no schema knows.
        std::vector<std::string> paths;
        std::ranges::transform(assignments.fTexts, std::back_inserter(paths), &ValueText::fPath);
        return {before, after, findings, UnknownPaths(rules, paths), changed};
    }

    std::vector<std::string> fAssignments;
};

// Throws Failure for keys that cannot be taken out.
void RequireKeys(
    std::string const& file, Dictionary const& settings, std::vector<std::string> const& keys) {
    std::vector<std::string> faults;
    for (std::string const& key : keys) {
        if (key == pdfsettings::kTailKey || Find(settings, key) == nullptr) {
            faults.push_back(InputName(file) + ": " + MissingKeyText(settings, key));
        }
    }
    FailIfAny(Status::kNo, faults);
}

std::string Remove(std::string text, std::vector<std::string> const& keys) {
    for (std::string const& key : keys) {
        auto changed = Without(pdfsettings::Document(text), key);
        if (changed) {
            text = std::move(*changed);
        }
    }
    return text;
}

// Takes keys out of a file, all of them or, if one is missing or the schema refuses the rest, none.
class UnsetCommand final : public ChangeCommand {
public:
    UnsetCommand(CLI::App& program, Options& options)
        : ChangeCommand(program, options, "unset", "Take settings out of a file") {
        AddArgument(Parser(), "KEY", fKeys, "Keys, as for get")->required();
        AddChangeOptions(options);
        Parser().footer(
            "Examples:\n"
            "  joboptions unset office.joboptions ColorImageDict\n"
            "  joboptions unset -n office.joboptions ColorImageDict/QFactor NeverEmbed");
    }

private:
    // Throws Failure with Status::kNo when there is no such key.
    Change Make(Editing const& editing) const override {
        auto const& [component, schema, file, text] = editing;
        auto const settings = ParseSettings(component, file, text, schema.Text());
        Dictionary const before = settings.Values();
        RequireKeys(file, before, fKeys);
        std::string const changed = Remove(text, fKeys);
        Dictionary after = before;
        for (std::string const& key : fKeys) {
            RemoveAt(after, key);
        }
        RequireSettings(
            component,
            file,
            changed,
            after,
            "no dictionary may be left empty: unset the whole of it");
        auto findings = ParseSettings(component, file, changed, schema.Text()).Validate();
        MarkOldFindings(settings, findings);
        return {before, after, findings, {}, changed};
    }

    std::vector<std::string> fKeys;
};

} // namespace

MakeCommand* const kMakeSetCommand = &Make<SetCommand>;
MakeCommand* const kMakeUnsetCommand = &Make<UnsetCommand>;

} // namespace joboptions
