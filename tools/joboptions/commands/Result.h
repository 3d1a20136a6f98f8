// What a command answers, to where its options say.
#pragma once

#include "pdfsettings/SafeSave.h"
#include "tools/joboptions/commands/Options.h"

#include <functional>
#include <string>
#include <string_view>

namespace joboptions {

// Writes text to the output that options name, or to standard output. In a dry run a file is only
// named. Throws Failure with Status::kNotWritten or kRefused.
void WriteResult(Options const& options, std::string_view text);

// Writes text to a file, which is replaced whole or not at all, unless it changed since the command
// began; "-" is standard output. Throws Failure with Status::kRefused where the save is refused,
// else with Status::kNotWritten, and the reason.
void WriteFile(std::string const& file, std::string_view text, Options const& options);

// Runs save, which saves file; its errors are those of WriteFile. Writes its warnings.
void WriteBy(
    std::string const& file,
    Options const& options,
    std::function<pdfsettings::SaveWarnings()> const& save);

// Looks at the output that options name, for the comparison before it is replaced. Throws Failure
// as WriteFile.
void LookAtOutput(Options& options);

pdfsettings::SaveOptions SaveOptionsOf(Options const& options);

// Whether the answer is coloured: in a file only when it is asked for.
bool UseColor(Options const& options);

} // namespace joboptions
