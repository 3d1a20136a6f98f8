#include "tools/joboptions/SetCommand.h"

#include "tools/joboptions/Assignment.h"
#include "tools/joboptions/Comments.h"
#include "tools/joboptions/Differences.h"
#include "tools/joboptions/Findings.h"
#include "tools/joboptions/Input.h"
#include "tools/joboptions/JsonDocuments.h"
#include "tools/joboptions/Layout.h"
#include "tools/joboptions/Locate.h"
#include "tools/joboptions/Replace.h"
#include "tools/joboptions/SchemaOption.h"
#include "tools/joboptions/Utf8.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>

namespace joboptions {

SetCommand::SetCommand(CLI::App& program, Options& options)
    : Command(program, "set", "Change settings of a file, if all new values are allowed"),
      fOptions(options) {
    AddFile(Parser(), options, fFile);
    Parser()
        .add_option(
            "KEY=VALUE",
            fAssignments,
            "A key, as for get, and a value as it stands in a file: true, 1.5, /Name, (text), "
            "[ 1 2 ]")
        ->required()
        ->type_name("");
    AddOutput(Parser(), options, "Write the changed settings there, and leave FILE as it is");
    AddDryRun(Parser(), options);
    AddForce(Parser(), options, "Save though somebody else changed FILE meanwhile");
    AddSchema(Parser(), options);
    AddJson(Parser(), options);
    AddOptions(Parser(), options);
    Parser().footer(
        "Examples:\n"
        "  joboptions set office.joboptions ColorImageResolution=150\n"
        "  joboptions set -n office.joboptions ColorImageDict/QFactor=0.76\n"
        "  joboptions set office.joboptions 'NeverEmbed=[ /Courier ]' -o new.joboptions");
}

Status SetCommand::Run() const {
    pdfsettings::Component const component;
    std::string const file = LocateForChange(component, fFile, fOptions);
    pdfsettings::Schema const schema = ReadSchema(component, fOptions);
    auto [settings, text] = OpenWithText(component, file, schema.Text());
    pdfsettings::Dictionary const before = settings.Values();
    auto const rules = schema.Settings();
    pdfsettings::Dictionary const changes = ReadAssignments(component, before, rules, fAssignments);
    WarnOfUnknown(rules, changes);
    auto const findings = settings.Set(changes);
    pdfsettings::Dictionary const after = settings.Values();
    auto const differences = Compare(before, after);
    if (fOptions.json) {
        WriteOutput(ChangeDocument(differences, findings, file));
    }
    if (!findings.empty()) {
        throw Failure(Status::kRefused, FindingsText(file, findings));
    }
    if (fOptions.dryRun) {
        WriteOutput(fOptions.json ? "" : DifferencesText(differences));
        return Status::kDone;
    }
    std::string const laidOut = LayOut(component, settings, file);
    WarnOfComments(file, text);
    Replace(file, settings, laidOut, fOptions);
    return Status::kDone;
}

// A misspelled key is allowed, for settings may hold what no schema knows.
void SetCommand::WarnOfUnknown(
    std::vector<pdfsettings::SettingRule> const& rules,
    pdfsettings::Dictionary const& changes) const {
    for (std::size_t place = 0; place < changes.Size() && !fOptions.quiet; ++place) {
        std::string const& key = changes.KeyAt(place);
        if (std::ranges::find(rules, key, &pdfsettings::SettingRule::key) == rules.end()) {
            WriteWarning(fmt::format("{}: the schema has no such setting", VisibleText(key)));
        }
    }
}

void SetCommand::WarnOfComments(std::string const& file, std::string const& text) const {
    if (HasComments(text) && !fOptions.quiet) {
        WriteWarning(fmt::format("{}: comments are not kept", InputName(file)));
    }
}

} // namespace joboptions
