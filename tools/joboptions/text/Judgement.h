// What commands say of one file.
#pragma once

#include "tools/joboptions/text/Diagnostics.h"

#include <optional>
#include <string>
#include <vector>

namespace joboptions {

// Of its text and its values.
struct Judgement {
    std::string file;
    std::string error; // why it could not be read or parsed; empty if it could
    std::optional<pdfsettings::Document> document; // none for a file that could not be read
    std::vector<Diagnostic> diagnostics;           // in the order of the text
};

// Of its layout.
struct LayoutJudgement {
    std::string file;
    std::string error; // why it could not be read, or why it was left as it is; empty if it was not
    bool differs = false; // it is, or was, laid out otherwise
};

} // namespace joboptions
