// Changes of a file in its own text: validated, shown, saved.
#pragma once

#include "pdfsettings/Component.h"
#include "pdfsettings/Finding.h"
#include "pdfsettings/Schema.h"
#include "pdfsettings/Settings.h"
#include "tools/joboptions/commands/Replace.h"

#include <functional>
#include <string>
#include <vector>

namespace joboptions {

// A settings file that is being changed, and what it is validated with.
struct Editing {
    pdfsettings::Component const& component;
    pdfsettings::Schema const& schema;
    std::string const& file;
    std::string const& text;
    SaveText const& save;
};

// Finds the file that name stands for and calls change with it, under the lock of an in-place
// change. Throws Failure as LocateForChange, ReadSchema and ChangeFile.
Status EditSettings(
    std::string const& name,
    Options const& options,
    std::function<Status(Editing const&)> const& change);

// The settings of a file before and after a change.
struct Change {
    std::string file;
    SaveText const& save;
    pdfsettings::Dictionary before;
    pdfsettings::Dictionary after;
    std::vector<pdfsettings::Finding> findings; // faults of the result
    std::vector<pdfsettings::Finding> warnings; // what may be meant otherwise
    std::string text;                           // of the result; not looked at when it has faults
};

// Shows the change, or saves it. Status::kDone; throws Failure with
// Status::kRefused for a result with faults, with Status::kWrongCall when standard output would
// have to take both JSON and the settings, and as save.
Status Finish(Change const& change, Options const& options);

// Says of those findings that settings had before their change that they are old.
void MarkOldFindings(
    pdfsettings::Settings const& settings, std::vector<pdfsettings::Finding>& findings);

// Makes sure that text gives those settings. Throws Failure with Status::kRefused, which names file
// and says what to do instead, when it does not.
void RequireSettings(
    pdfsettings::Component const& component,
    std::string const& file,
    std::string const& text,
    pdfsettings::Dictionary const& settings,
    char const* instead);

} // namespace joboptions
