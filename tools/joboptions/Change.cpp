#include "tools/joboptions/Change.h"

#include "host/Error.h"
#include "tools/joboptions/Differences.h"
#include "tools/joboptions/Findings.h"
#include "tools/joboptions/Input.h"
#include "tools/joboptions/JsonDocuments.h"
#include "tools/joboptions/Output.h"
#include "tools/joboptions/Replace.h"

#include <fmt/format.h>

namespace joboptions {

Status Finish(Change const& change, Options const& options) {
    auto const differences = Compare(change.before, change.after);
    if (options.json) {
        WriteOutput(ChangeDocument(differences, change.findings, change.file));
    }
    if (!change.findings.empty()) {
        throw Failure(Status::kRefused, FindingsText(change.file, change.findings));
    }
    if (options.dryRun) {
        WriteOutput(options.json ? "" : DifferencesText(differences));
        return Status::kDone;
    }
    Replace(change.file, change.settings, change.text, options);
    return Status::kDone;
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
    throw Failure(
        Status::kRefused,
        fmt::format(
            "{}: this change cannot be made in its text so that it reads back; {}",
            InputName(file),
            instead));
}

} // namespace joboptions
