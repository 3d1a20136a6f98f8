// Findings about files, as text.
#pragma once

#include "pdfsettings/Document.h"
#include "pdfsettings/Error.h"
#include "pdfsettings/Finding.h"

#include <optional>
#include <string>

namespace joboptions {

// "file:line:column: error: key: message [id]", and the line of the text with carets under the
// span; with line ends. A line "file:line:column: note: see key" for each related setting. With
// color, severity and carets are coloured. REQUIRES: the finding has a span in document.
std::string FindingText(
    std::string const& file,
    pdfsettings::Document const& document,
    pdfsettings::Finding const& finding,
    bool color);

// "file:line:column: message [id]" for an error, without the parts that are missing.
std::string ErrorText(std::string const& file, pdfsettings::Error const& error);

// A repair of a file, or one that is only possible: "file:line:column: repaired: message [id]".
std::string
RepairText(std::string const& file, pdfsettings::Finding const& repair, bool isMade, bool color);

// The findings of a file.
struct CheckedFile {
    std::string file;
    std::string error; // why the file could not be read, parsed or repaired, or empty
    std::optional<pdfsettings::Document> document; // nothing if the file could not be read
    pdfsettings::Findings findings;                // of the document, in the order of the text
    pdfsettings::Findings repairs;                 // of the text before them
};

// The result of formatting a file.
struct FormattedFile {
    std::string file;
    std::string error;    // why the file could not be read, or was not changed; or empty
    bool differs = false; // whether its layout differs, or differed before the rewrite
};

} // namespace joboptions
