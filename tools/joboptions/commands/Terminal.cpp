#include "tools/joboptions/commands/Terminal.h"

#include "tools/joboptions/commands/Output.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sys/ioctl.h>
#include <unistd.h>

namespace joboptions {

namespace {

constexpr std::size_t kUsualWidth = 80;

// Zeros where standard output is no terminal.
winsize SizeOfTerminal() {
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size : winsize{};
}

// Whether a pager took the text. It may be left before its end: that is no failure of the command.
bool Page(std::string const& text) {
    char const* const named = std::getenv("PAGER");
    std::string const pager = named != nullptr && *named != '\0' ? named : "less";
    setenv("LESS", "FRX", /*overwrite=*/0);
    auto* const before = std::signal(SIGPIPE, SIG_IGN);
    bool isTaken = false;
    if (std::FILE* const pipe = popen(pager.c_str(), "w"); pipe != nullptr) {
        std::fwrite(text.data(), 1, text.size(), pipe);
        constexpr int kNoSuchCommand = 127; // of the shell
        int const status = pclose(pipe);
        isTaken = !WIFEXITED(status) || WEXITSTATUS(status) != kNoSuchCommand;
    }
    std::signal(SIGPIPE, before);
    return isTaken;
}

} // namespace

std::size_t TerminalWidth() {
    std::size_t const width = SizeOfTerminal().ws_col;
    return width == 0 ? kUsualWidth : width;
}

void WritePaged(std::string const& text) {
    std::size_t const height = SizeOfTerminal().ws_row;
    auto const lines = static_cast<std::size_t>(std::ranges::count(text, '\n'));
    if (height == 0 || lines < height || !Page(text)) {
        WriteOutput(text);
    }
}

Progress::Progress(std::size_t total, bool quiet)
    : fTotal(total),
      fIsOn(!quiet && IsCapableTerminal(STDERR_FILENO)),
      fNext(Clock::now() + std::chrono::seconds(1)) {}

void Progress::Show(std::size_t done) {
    constexpr std::chrono::milliseconds kBetween(100);
    if (fIsOn && Clock::now() >= fNext) {
        std::fprintf(stderr, "\r\x1b[K%zu of %zu files", done, fTotal);
        fIsShown = true;
        fNext = Clock::now() + kBetween;
    }
}

void Progress::Clear() {
    if (fIsShown) {
        std::fputs("\r\x1b[K", stderr);
        fIsShown = false;
    }
}

} // namespace joboptions
