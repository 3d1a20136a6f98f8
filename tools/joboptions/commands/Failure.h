// How a command ends: its exit statuses and the exception that leads to the failing ones.
#pragma once

#include <stdexcept>
#include <string>

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

} // namespace joboptions
