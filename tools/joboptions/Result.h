// What a command answers, to where its options say.
#pragma once

#include "tools/joboptions/Options.h"

#include <string_view>

namespace joboptions {

// Writes text to the output that options name, or to standard output. In a dry run a file is only
// named. Throws Failure with Status::kNotWritten or kRefused.
void WriteResult(Options const& options, std::string_view text);

// Whether the answer is coloured: in a file only when it is asked for.
bool UseColor(Options const& options);

} // namespace joboptions
