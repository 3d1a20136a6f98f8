// What is said about a file, at its place in it.
#pragma once

#include "pdfsettings/Document.h"
#include "pdfsettings/Error.h"
#include "pdfsettings/Finding.h"

#include <optional>
#include <string>

namespace joboptions {

// "file:line:column: error: key: message [id]", and the line of the text with carets below what is
// meant. With line ends. With color, the severity and the carets are coloured for a terminal.
// REQUIRES: the finding has a place in document.
std::string FindingText(
    std::string const& file,
    pdfsettings::Document const& document,
    pdfsettings::Finding const& finding,
    bool color);

// What is wrong with a file, "file:line:column: message [id]" without what is missing.
std::string ErrorText(std::string const& file, pdfsettings::Error const& error);

// The findings of a file.
struct CheckedFile {
    std::string file;
    std::string error; // why it could not be read or parsed; empty if it could
    std::optional<pdfsettings::Document> document; // none for a file that could not be read
    pdfsettings::Findings findings;                // in the order of the text
};

// The layout of a file.
struct FormattedFile {
    std::string file;
    std::string error; // why it could not be read, or why it was left as it is; empty if it was not
    bool differs = false; // it is, or was, laid out otherwise
};

} // namespace joboptions
