// Differences between two sets of settings.
#pragma once

#include "pdfsettings/Document.h"
#include "pdfsettings/Export.h"
#include "pdfsettings/Schema.h"
#include "pdfsettings/Sequence.h"
#include "pdfsettings/Value.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace pdfsettings {

// A value that differs; before or after is empty if there is no value.
struct Difference {
    std::string path; // for any Find()
    std::optional<Value> before;
    std::optional<Value> after;
};

// The differences by key and value. The order of keys is ignored, and numbers compare by value.
// Nested dictionaries, and arrays of equal length, are compared value by value. Ordered as in
// before, new values after the values beside them. Throws std::bad_alloc.
PDFSETTINGS_API Sequence<Difference> Compare(Dictionary const& before, Dictionary const& after);

// As above, for documents. The tail counts as a RawString with the key "AlembicorData".
PDFSETTINGS_API Sequence<Difference> Compare(Document const& before, Document const& after);

// A setting of several sets. A dictionary is compared by what is in it, an array as a whole.
struct ComparedSetting {
    std::string path;
    std::string label; // of the schema; empty for a setting that it does not know
    std::string group;
    std::vector<std::optional<Value>> values; // one for each set, nothing where it is missing
    bool differs = false;
};

// All settings of the sets side by side: in the schema's groups and their order, then those that it
// does not know in the order of the sets. Numbers compare by value. Throws std::bad_alloc.
PDFSETTINGS_API Sequence<ComparedSetting>
Tabulate(std::span<Document const> sets, Schema const& schema = Schema::Standard());

} // namespace pdfsettings
