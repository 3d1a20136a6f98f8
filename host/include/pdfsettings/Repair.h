// Repair of what a settings file says wrongly in a way that can mean only one thing.
#pragma once

#include "pdfsettings/Document.h"
#include "pdfsettings/Export.h"
#include "pdfsettings/Finding.h"
#include "pdfsettings/Schema.h"

namespace pdfsettings {

struct RepairedDocument {
    Document document;

    // What was repaired, in the order of the text: the id of the finding that it was, and what was
    // written. Bytes and place are those in the text before; of one in UTF-16, in the text as
    // converted.
    Findings repairs;
};

// Corrects a byte order mark, UTF-16, "TRUE" for true, "+1" and ".5" for 1 and 0.5, the slash that
// is missing before a key or a name, a comma for a point ("1,5", but not "1,200"), and the end of
// settings that are whole: each where the schema has a rule for the setting and accepts only one
// reading. All other bytes stay. What is left is found by Review. Of a file with thousands of
// mistakes only the first ones are corrected, and the same call goes on with the result. Throws
// Error as Component::Shared, and std::bad_alloc.
PDFSETTINGS_API RepairedDocument
Repair(Document const& document, Schema const& schema = Schema::Standard());

} // namespace pdfsettings
