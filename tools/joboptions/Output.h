// What a command writes.
#pragma once

#include <string>
#include <string_view>

namespace joboptions {

enum class Color { kAuto, kAlways, kNever };

// Whether standard output gets colours. kAuto: on a terminal that is not dumb, unless NO_COLOR is
// set.
bool UseColor(Color choice);

// Writes text to standard output, all of it. Throws Failure with Status::kNotWritten and the
// reason.
void WriteOutput(std::string_view text);

// Writes a line to standard error that begins with the program's name and "error".
void WriteError(std::string_view message);

} // namespace joboptions
