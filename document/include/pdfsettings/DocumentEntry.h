// Where the settings of a text stand.
#pragma once

#include "pdfsettings/TextFinding.h"

#include <cstddef>

namespace pdfsettings {

// Where a setting, or an element of an array, stands.
struct DocumentEntry {
    Span key;              // with its slash; empty for an element
    Span value;            // from its first to its last byte
    std::size_t next = 0;  // the place in Document::Entries() behind all that it holds
    std::size_t depth = 0; // of the dictionary or array that it stands in; 0 for a setting
};

} // namespace pdfsettings
