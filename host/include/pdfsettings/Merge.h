// Merging changes that two people made in the same set of settings.
#pragma once

#include "pdfsettings/Document.h"
#include "pdfsettings/Export.h"
#include "pdfsettings/Sequence.h"
#include "pdfsettings/Value.h"

#include <optional>
#include <string>

namespace pdfsettings {

// A setting that both changed, but not to the same value; nothing where there is no value.
struct MergeConflict {
    std::string path; // for any Find(); "AlembicorData" for the tail
    std::optional<Value> base;
    std::optional<Value> ours;
    std::optional<Value> theirs;
    bool isMarked = false; // the text has a comment with both
};

// The result of Merge.
struct MergedDocument {
    // Our text with what they changed. Where both changed a setting, it has our value, and where
    // the text allows it, comments above with both: see MergeConflict::isMarked.
    Document document;

    Sequence<MergeConflict> conflicts;
};

// Merges, key by key, what two documents changed since the one that both began with. Numbers
// compare by value, dictionaries are merged, arrays are taken as a whole. Our comments and layout
// stay, and their values are copied byte for byte. A value that cannot be copied is a conflict; so
// are those that are left after thousands of changes. Throws Error (kSyntax) if one of the texts is
// refused.
PDFSETTINGS_API MergedDocument
Merge(Document const& base, Document const& ours, Document const& theirs);

} // namespace pdfsettings
