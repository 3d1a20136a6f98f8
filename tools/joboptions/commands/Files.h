// Reading inputs, writing results, and changing files in place.
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

// Throws Failure with Status::kWrongCall if "-" is given more than once, among files and the schema
// in options: standard input can be read once.
void RequireOneStandardInput(std::vector<std::string> files, Options const& options);

// All bytes of a file; "-" is standard input. Throws Failure with Status::kBadInput and the reason
// if it cannot be read.
std::string ReadBytes(std::string const& file);

// The document in a file; "-" is standard input. Throws Failure with Status::kBadInput, position
// and reason, if it cannot be read or is refused.
pdfsettings::Document ReadDocument(std::string const& file);

// The settings in text, which is from file. Throws Failure with Status::kBadInput, position and
// reason, if it cannot be parsed.
pdfsettings::Settings
ParseSettings(std::string const& file, std::string const& text, pdfsettings::Schema const& schema);

// The schema in the file named by options, else the standard schema. Throws Failure with
// Status::kBadSchema: the reason if the file cannot be read, or all problems with line and column
// if the schema cannot be used.
pdfsettings::Schema ReadSchema(Options const& options);

// Writes text to the output named by options, or to standard output. A dry run only writes the name
// of the output file, to standard output. Throws Failure with the reason: Status::kRefused if the
// save is refused, else Status::kNotWritten.
void WriteResult(Options const& options, std::string_view text);

// Records the contents of the output named by options, to compare them before it is replaced.
// Throws Failure as WriteResult.
void LookAtOutput(Options& options);

// Whether to colour the result. Output to a file is coloured only on request.
bool UseColor(Options const& options);

// Saves the text of a changed file. Throws Failure as WriteResult.
using SaveText = std::function<void(std::string const& text)>;

// Changes the text of a file, and calls save at most once.
using ChangeText = std::function<Status(std::string const& text, SaveText const& save)>;

// Calls change with the text of file. The changed text is saved in the output named by options,
// else in file; "-" is standard output. A file that is changed in place is locked meanwhile. Throws
// Failure with Status::kRefused if the lock cannot be taken, with Status::kBadInput if file cannot
// be read, and what change throws.
Status ChangeFile(std::string const& file, Options const& options, ChangeText const& change);

// Throws Failure with Status::kRefused if saving a change would be refused: for a read-only file,
// an untrusted link, or a file in use.
void RequireReplaceable(std::string const& file, Options const& options);

// Throws Failure with Status::kWrongCall if standard output would get both JSON and the settings.
void RequireRoom(std::string const& file, Options const& options);

} // namespace joboptions
