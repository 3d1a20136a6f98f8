// joboptions set: changes settings of a file.
#include "tools/joboptions/commands/Command.h"

#include "pdfsettings/Splice.h"
#include "tools/joboptions/commands/Assignment.h"
#include "tools/joboptions/commands/Change.h"
#include "tools/joboptions/commands/Input.h"
#include "tools/joboptions/commands/Options.h"
#include "tools/joboptions/text/Diagnostics.h"
#include "tools/joboptions/text/KnownKeys.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>
#include <memory>
#include <string>
#include <vector>

namespace joboptions {

namespace {

using pdfsettings::Dictionary;

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
    std::vector<pdfsettings::Finding>& findings,
    Dictionary const& values,
    std::vector<pdfsettings::SettingRule> const& rules) {
    for (std::size_t i = 0; i < std::min(findings.size(), kMostHints); ++i) {
        findings[i].message += NameHint(values, rules, findings[i]);
    }
}

// A misspelled key is allowed, for settings may hold what no schema knows.
std::vector<pdfsettings::Finding> UnknownKeys(
    std::vector<pdfsettings::SettingRule> const& rules, std::vector<ValueText> const& values) {
    KnownKeys const known(rules);
    std::vector<pdfsettings::Finding> warnings;
    for (auto const& [path, value] : values) {
        if (auto const warning = known.Warning(path)) {
            warnings.push_back({path, *warning});
        }
    }
    return warnings;
}

// Changes values in a file, all of them or, if the schema refuses a single one, none.
class SetCommand final : public Command {
public:
    SetCommand(CLI::App& program, Options& options)
        : Command(
              program, options, "set", "Change settings of a file, if all new values are allowed") {
        AddFile(Parser(), options, fFile);
        AddArgument(
            Parser(),
            "KEY=VALUE",
            fAssignments,
            "A key, as for get, and a value as it stands in a file: true, 1.5, /Name, (text), "
            "[ 1 2 ]")
            ->required();
        AddChangeOptions(Parser(), options);
        Parser().footer(
            "Examples:\n"
            "  joboptions set office.joboptions ColorImageResolution=150\n"
            "  joboptions set -n office.joboptions ColorImageDict/QFactor=0.76\n"
            "  joboptions set office.joboptions 'NeverEmbed=[ /Courier ]' -o new.joboptions");
    }

    // Status::kDone, or Status::kRefused with all faults when the schema does not allow the result.
    Status Run() const override {
        return EditSettings(
            fFile, fOptions, [this](Editing const& editing) { return Set(editing); });
    }

private:
    Status Set(Editing const& editing) const {
        auto const& [component, schema, file, text, save] = editing;
        auto settings = ParseSettings(component, file, text, schema.Text());
        pdfsettings::Dictionary const before = settings.Values();
        auto const& rules = schema.Settings();
        auto const assignments = ReadAssignments(component, before, rules, fAssignments);
        auto findings = settings.Set(assignments.changes);
        MarkOldFindings(settings, findings);
        AddHints(findings, Changed(before, assignments.changes), rules);
        pdfsettings::Dictionary const after = settings.Values();
        std::string const changed = findings.empty() ? Splice(text, assignments.texts) : text;
        RequireSettings(
            component,
            file,
            changed,
            after,
            "an empty dictionary can only stand last, and other files need joboptions fmt first");
        return Finish(
            {file, save, before, after, findings, UnknownKeys(rules, assignments.texts), changed},
            fOptions);
    }

    std::string fFile;
    std::vector<std::string> fAssignments;
};

} // namespace

std::unique_ptr<Command> MakeSetCommand(CLI::App& program, Options& options) {
    return std::make_unique<SetCommand>(program, options);
}

} // namespace joboptions
