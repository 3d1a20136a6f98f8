// How a command ends, and what it writes.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace joboptions {

enum class Status {
    kDone = 0,
    kNo = 1,         // the answer is no
    kWrongCall = 2,  // the command line cannot be used
    kBadInput = 3,   // an input cannot be read or parsed
    kBadSchema = 4,  // the schema cannot be used
    kRefused = 5,    // read-only, or a value that is not allowed: nothing was written
    kNotWritten = 6, // an output cannot be written
};

// Ends a command with a message and a status. A message of several lines is several messages.
class Failure : public std::runtime_error {
public:
    Failure(Status status, std::string const& message)
        : std::runtime_error(message),
          fStatus(status) {}

    Status ExitStatus() const noexcept { return fStatus; }

private:
    Status fStatus;
};

// How messages name a file: its path with control bytes made visible.
std::string InputName(std::string const& file);

// Throws Failure with that status and "FILE: reason".
[[noreturn]] void Fail(Status status, std::string const& file, std::string const& reason);

// Throws Failure with that status and all messages, if there are any.
void FailIfAny(Status status, std::vector<std::string> const& messages);

enum class Color { kAuto, kAlways, kNever };

// Whether standard output gets colours. kAuto: on a terminal that is not dumb, unless NO_COLOR is
// set.
bool UseColor(Color choice);

// The colours of a terminal, by their number in ISO 6429.
inline constexpr int kRed = 31;
inline constexpr int kGreen = 32;
inline constexpr int kYellow = 33;
inline constexpr int kCyan = 36;

// text, in that colour if it is to have one.
std::string Colored(std::string_view text, int number, bool color);

// Writes text to standard output, all of it. Throws Failure with Status::kNotWritten and the
// reason.
void WriteOutput(std::string_view text);

// Write a line to standard error that begins with the program's name and "error" or "warning",
// unless quiet.
void WriteError(std::string_view message, bool quiet = false);
void WriteWarning(std::string_view message, bool quiet);

} // namespace joboptions
