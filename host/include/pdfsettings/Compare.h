// What differs between two sets of settings.
#pragma once

#include "pdfsettings/Document.h"
#include "pdfsettings/Export.h"
#include "pdfsettings/Sequence.h"
#include "pdfsettings/Value.h"

#include <optional>
#include <string>

namespace pdfsettings {

// A value that differs; nothing where it is missing.
struct Difference {
    std::string path; // fit for every Find()
    std::optional<Value> before;
    std::optional<Value> after;
};

// The differences by key and value: the order of keys does not matter, and numbers compare by
// value. Nested dictionaries, and arrays of the same length, are compared value by value. In the
// order of before, with what is new behind what stands beside it. Throws std::bad_alloc.
PDFSETTINGS_API Sequence<Difference> Compare(Dictionary const& before, Dictionary const& after);

// The same for files: what follows the settings counts as a RawString under "AlembicorData".
PDFSETTINGS_API Sequence<Difference> Compare(Document const& before, Document const& after);

} // namespace pdfsettings
