// Differences between two sets of settings.
#pragma once

#include "pdfsettings/Document.h"
#include "pdfsettings/Export.h"
#include "pdfsettings/Sequence.h"
#include "pdfsettings/Value.h"

#include <optional>
#include <string>

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

} // namespace pdfsettings
