#include "tools/joboptions/commands/Change.h"

#include "pdfsettings/Error.h"
#include "tools/joboptions/commands/Input.h"
#include "tools/joboptions/commands/ListEntries.h"
#include "tools/joboptions/json/JsonDocuments.h"
#include "tools/joboptions/text/Differences.h"
#include "tools/joboptions/text/Utf8.h"

#include <fmt/format.h>
#include <set>
#include <utility>

namespace joboptions {

namespace {

// "file: key: message" of each, in lines.
std::string
FindingsText(std::string const& file, std::vector<pdfsettings::Finding> const& findings) {
    std::string text;
    for (auto const& [key, message] : findings) {
        text += fmt::format(
            "{}{}: {}: {}",
            text.empty() ? "" : "\n",
            InputName(file),
            VisibleText(key),
            VisibleText(message));
    }
    return text;
}

} // namespace

Status EditSettings(
    std::string const& name,
    Options const& options,
    std::function<Status(Editing const&)> const& change) {
    pdfsettings::Component const component;
    std::string const file = LocateForChange(component, name, options);
    pdfsettings::Schema const schema = ReadSchema(component, options);
    return ChangeFile(file, options, [&](std::string const& text, SaveText const& save) {
        return change({component, schema, file, text, save});
    });
}

Status Finish(Change const& change, Options const& options) {
    RequireRoom(change.file, options);
    auto const differences = Compare(change.before, change.after);
    if (options.json) {
        WriteOutput(ChangeDocument(differences, change.findings, change.warnings, change.file));
    }
    for (pdfsettings::Finding const& warning : change.warnings) {
        WriteWarning(VisibleText(warning.key) + ": " + warning.message, options.quiet);
    }
    if (!change.findings.empty()) {
        throw Failure(Status::kRefused, FindingsText(change.file, change.findings));
    }
    if (options.dryRun) {
        RequireReplaceable(change.file, options);
        WriteOutput(options.json ? "" : DifferencesText(differences, UseColor(options.color)));
        return Status::kDone;
    }
    change.save(change.text);
    return Status::kDone;
}

void MarkOldFindings(
    pdfsettings::Settings const& settings, std::vector<pdfsettings::Finding>& findings) {
    if (findings.empty()) {
        return;
    }
    std::set<std::pair<std::string, std::string>> before;
    for (pdfsettings::Finding& old : settings.Validate()) {
        before.emplace(std::move(old.key), std::move(old.message));
    }
    for (pdfsettings::Finding& finding : findings) {
        bool const isOld = before.contains({finding.key, finding.message});
        finding.message += isOld ? " (as before the change)" : "";
    }
}

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

} // namespace joboptions
