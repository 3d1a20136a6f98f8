// Listed settings as text.
#pragma once

#include "tools/joboptions/commands/ListEntries.h"

#include <string>
#include <vector>

namespace joboptions {

// A line for each: its name, whether it is read-only and hidden, and when it changed last, by the
// clock of this place.
std::string ListLines(std::vector<ListEntry> const& entries);

// A paragraph for each, with all that is known.
std::string ListParagraphs(std::vector<ListEntry> const& entries);

// {"version", "settings": [{"name", "path", "folder", "readOnly", "reasons", "modified", "hidden",
// "showHide", "shadows"}]}; times in UTC.
std::string ListDocument(std::vector<ListEntry> const& entries);

// {"version", "folder": the path}.
std::string FolderDocument(std::string const& folder);

} // namespace joboptions
