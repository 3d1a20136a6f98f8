// Repair of mistakes in a settings file that have only one possible meaning.
#pragma once

#include "pdfsettings/Document.h"
#include "pdfsettings/Export.h"
#include "pdfsettings/Finding.h"
#include "pdfsettings/Schema.h"

namespace pdfsettings {

// The result of Repair.
struct RepairedDocument {
    Document document;

    // The repairs in the order of the text: each has the id of the finding that it repaired, and a
    // message with the new text. Span and position are those in the original text; of a text in
    // UTF-16, those after conversion.
    Findings repairs;
};

// Repairs a byte order mark, UTF-16, "TRUE" for true, "+1" and ".5" for 1 and 0.5, a missing slash
// before a key or a name, a comma in place of a decimal point ("1,5", but not "1,200"), and a
// missing setalembicorparams, or a part of it and of the ">>" before it, at the end. A value is
// repaired only if the schema has a rule for its setting and accepts only one of the possible
// meanings, and all other settings are read as before. All other bytes stay. Nothing is repaired
// behind a mistake that may hide what was meant, and in a file with hundreds of mistakes only the
// first ones are repaired: Review finds what remains. Throws Error as Component::Shared, and
// std::bad_alloc.
PDFSETTINGS_API RepairedDocument
Repair(Document const& document, Schema const& schema = Schema::Standard());

} // namespace pdfsettings
