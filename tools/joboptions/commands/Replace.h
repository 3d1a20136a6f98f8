// What a command answers, to where its options say, and changing files in place.
#pragma once

#include "pdfsettings/SafeSave.h"
#include "tools/joboptions/commands/Options.h"
#include "tools/joboptions/commands/Output.h"

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

// Puts a text where the result of a change belongs. Throws Failure as WriteFile.
using SaveText = std::function<void(std::string const& text)>;

// What a command makes of the text of a file; it may save once.
using ChangeText = std::function<Status(std::string const& text, SaveText const& save)>;

// Calls change with the text of file. What it saves goes where options say, else over file; "-" is
// standard output. A file that is changed in place stays locked meanwhile. Throws Failure with
// Status::kRefused for a lock that cannot be had, with Status::kBadInput when file cannot be read,
// and whatever change throws.
Status ChangeFile(std::string const& file, Options const& options, ChangeText const& change);

// Throws Failure with Status::kRefused when the result of a change would be refused: for a
// read-only file or a planted link.
void RequireReplaceable(std::string const& file, Options const& options);

// Throws Failure with Status::kWrongCall when standard output would have to take both JSON and the
// settings.
void RequireRoom(std::string const& file, Options const& options);

} // namespace joboptions
