// Where settings are read from, what a command answers, to where its options say, and changing
// files in place.
#pragma once

#include "pdfsettings/Schema.h"
#include "pdfsettings/Settings.h"
#include "pdfsettings/Value.h"
#include "tools/joboptions/commands/Options.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace joboptions {

// Standard input can be read once. Throws Failure with Status::kWrongCall when more than one of
// files and the schema that options name is "-".
void RequireOneStandardInput(std::vector<std::string> files, Options const& options);

// All bytes of a file; "-" is standard input. Throws Failure with Status::kBadInput and the reason
// when it cannot be read.
std::string ReadBytes(std::string const& file);

// The document that a file holds; "-" is standard input. Throws Failure with Status::kBadInput, the
// place and the reason when it cannot be read or is refused.
pdfsettings::Document ReadDocument(std::string const& file);

// The settings in text, which comes from file. Throws Failure with Status::kBadInput, the place and
// the reason when they cannot be parsed.
pdfsettings::Settings
ParseSettings(std::string const& file, std::string const& text, pdfsettings::Schema const& schema);

// The schema in the file that options name, else the standard schema. Throws Failure with
// Status::kBadSchema: the reason when the file cannot be read, or all problems, each with line and
// column, when the schema cannot be used.
pdfsettings::Schema ReadSchema(Options const& options);

// Writes text to the output that options name, or to standard output. In a dry run a file is only
// named. Throws Failure with Status::kRefused where the save is refused, else with
// Status::kNotWritten, and the reason.
void WriteResult(Options const& options, std::string_view text);

// Looks at the output that options name, for the comparison before it is replaced. Throws Failure
// as WriteResult.
void LookAtOutput(Options& options);

// Whether the answer is coloured: in a file only when it is asked for.
bool UseColor(Options const& options);

// Puts a text where the result of a change belongs. Throws Failure as WriteResult.
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
