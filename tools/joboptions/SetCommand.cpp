#include "tools/joboptions/SetCommand.h"

#include "host/Splice.h"
#include "tools/joboptions/Assignment.h"
#include "tools/joboptions/Change.h"
#include "tools/joboptions/Input.h"
#include "tools/joboptions/Locate.h"
#include "tools/joboptions/SchemaOption.h"
#include "tools/joboptions/Utf8.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>

namespace joboptions {

namespace {

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

} // namespace

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
    AddChangeOptions(Parser(), options);
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
    auto const assignments = ReadAssignments(component, before, rules, fAssignments);
    WarnOfUnknown(rules, assignments.changes);
    auto const findings = settings.Set(assignments.changes);
    pdfsettings::Dictionary const after = settings.Values();
    std::string const changed = findings.empty() ? Splice(text, assignments.texts) : text;
    RequireSettings(component, file, changed, after, "lay it out with joboptions fmt first");
    return Finish({file, settings, before, after, findings, changed}, fOptions);
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

} // namespace joboptions
