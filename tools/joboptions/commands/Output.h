// Exit status and output of commands.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace joboptions {

enum class Status {
    kDone = 0,
    kNo = 1,         // a negative answer, such as a difference
    kWrongCall = 2,  // the command line cannot be used
    kBadInput = 3,   // an input cannot be read or parsed
    kBadSchema = 4,  // the schema cannot be used
    kRefused = 5,    // read-only, or a value that is not allowed: nothing was written
    kNotWritten = 6, // an output cannot be written
};

// Ends a command with a message and a status. Each line is a message.
class Failure : public std::runtime_error {
public:
    Failure(Status status, std::string const& message)
        : std::runtime_error(message),
          fStatus(status) {}

    Status ExitStatus() const noexcept { return fStatus; }

private:
    Status fStatus;
};

// The name of a file in messages: its path with control bytes made visible.
std::string InputName(std::string const& file);

// Throws Failure with this status and "FILE: reason".
[[noreturn]] void Fail(Status status, std::string const& file, std::string const& reason);

// Throws Failure with this status and all messages, if there are any.
void FailIfAny(Status status, std::vector<std::string> const& messages);

enum class Color { kAuto, kAlways, kNever };

// Whether a descriptor is a terminal that is not dumb.
bool IsCapableTerminal(int descriptor);

// Whether to colour standard output. kAuto: if it is a terminal that is not dumb, and NO_COLOR is
// not set.
bool UseColor(Color choice);

// Terminal colours by their numbers in ISO 6429.
inline constexpr int kRed = 31;
inline constexpr int kGreen = 32;
inline constexpr int kYellow = 33;
inline constexpr int kCyan = 36;

// text in this colour, if color is true.
std::string Colored(std::string_view text, int number, bool color);

// Writes all of text to standard output. Throws Failure with Status::kNotWritten and the reason.
void WriteOutput(std::string_view text);

// Write a line to standard error, unless quiet: the program's name, "error", "warning" or "note",
// and the message.
void WriteError(std::string_view message, bool quiet = false);
void WriteWarning(std::string_view message, bool quiet);
void WriteNote(std::string_view message, bool quiet);

// Writes each line of messages as WriteError.
void WriteErrors(std::string_view messages, bool quiet);

} // namespace joboptions
