// Changes of a file in its own text: judged, shown, saved.
#pragma once

#include "pdfsettings/Component.h"
#include "pdfsettings/Finding.h"
#include "pdfsettings/Settings.h"
#include "tools/joboptions/Failure.h"
#include "tools/joboptions/Options.h"

#include <string>
#include <vector>

namespace joboptions {

// The settings of a file before and after a change.
struct Change {
    std::string file;
    pdfsettings::Settings const& settings; // bound to the file
    pdfsettings::Dictionary before;
    pdfsettings::Dictionary after;
    std::vector<pdfsettings::Finding> findings; // faults of the result
    std::vector<pdfsettings::Finding> warnings; // what may be meant otherwise
    std::string text;                           // of the result; not looked at when it has faults
};

// Shows the change, or saves it where options say. Status::kDone; throws Failure with
// Status::kRefused for a result with faults, with Status::kWrongCall when standard output would
// have to take both JSON and the settings, and as Replace.
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
