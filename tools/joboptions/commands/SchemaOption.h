// The schema that a command judges by.
#pragma once

#include "pdfsettings/Component.h"
#include "pdfsettings/Schema.h"
#include "tools/joboptions/commands/Options.h"

namespace joboptions {

// The schema in the file that options name, else the standard schema. Throws Failure with
// Status::kBadSchema: the reason when the file cannot be read, or all faults, each with line and
// column, when the schema cannot be used.
pdfsettings::Schema ReadSchema(pdfsettings::Component const& component, Options const& options);

} // namespace joboptions
