#include "tools/joboptions/commands/Output.h"

#include "tools/joboptions/text/Utf8.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fmt/format.h>
#include <system_error>
#include <unistd.h>

namespace joboptions {

namespace {

bool IsSet(char const* variable) {
    char const* const value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

// If standard error cannot be written, the exit status still reports the failure.
void WriteMessage(char const* severity, std::string_view message, bool quiet) {
    if (quiet) {
        return;
    }
    std::string const line = fmt::format("joboptions: {}: {}\n", severity, message);
    static_cast<void>(std::fwrite(line.data(), 1, line.size(), stderr));
}

} // namespace

std::string InputName(std::string const& file) {
    if (file.empty()) {
        return "\"\"";
    }
    return file == "-" ? "standard input" : VisibleText(file);
}

void Fail(Status status, std::string const& file, std::string const& reason) {
    throw Failure(status, fmt::format("{}: {}", InputName(file), reason));
}

void FailIfAny(Status status, std::vector<std::string> const& messages) {
    if (!messages.empty()) {
        throw Failure(status, fmt::format("{}", fmt::join(messages, "\n")));
    }
}

bool IsCapableTerminal(int descriptor) {
    char const* const terminal = std::getenv("TERM");
    bool const isDumb = terminal == nullptr || std::string_view(terminal) == "dumb";
    return !isDumb && isatty(descriptor) != 0;
}

bool UseColor(Color choice) {
    if (choice != Color::kAuto) {
        return choice == Color::kAlways;
    }
    return IsCapableTerminal(STDOUT_FILENO) && !IsSet("NO_COLOR");
}

std::string Colored(std::string_view text, int number, bool color) {
    return color ? fmt::format("\x1b[{}m{}\x1b[0m", number, text) : std::string(text);
}

// A full disk may be detected only when the buffer is flushed.
void WriteOutput(std::string_view text) {
    errno = 0;
    bool const isWritten = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    if (!isWritten || std::fflush(stdout) != 0) {
        throw Failure(
            Status::kNotWritten,
            fmt::format("standard output: {}", std::generic_category().message(errno)));
    }
}

void WriteError(std::string_view message, bool quiet) {
    WriteMessage("error", message, quiet);
}

void WriteErrors(std::string_view messages, bool quiet) {
    while (!messages.empty()) {
        std::size_t const end = std::min(messages.find('\n'), messages.size());
        WriteError(messages.substr(0, end), quiet);
        messages.remove_prefix(std::min(end + 1, messages.size()));
    }
}

void WriteWarning(std::string_view message, bool quiet) {
    WriteMessage("warning", message, quiet);
}

void WriteNote(std::string_view message, bool quiet) {
    WriteMessage("note", message, quiet);
}

} // namespace joboptions
