// Long output and long work on a terminal.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace joboptions {

// The width of the terminal that standard output is, in cells; 80 if it is none or does not say.
std::size_t TerminalWidth();

// Writes text to standard output: through the pager that PAGER names, else less, if standard output
// is a terminal and text is longer than it. Throws Failure as WriteOutput.
void WritePaged(std::string const& text);

// A line on the terminal that standard error is, if any, that counts files while they are worked
// on: from the first second on, and not if quiet. It disappears at the end.
class Progress {
public:
    Progress(std::size_t total, bool quiet);
    Progress(Progress const&) = delete;
    Progress& operator=(Progress const&) = delete;
    ~Progress() { Clear(); }

    // Shows how many are done.
    void Show(std::size_t done);

    // Makes room for another line.
    void Clear();

private:
    using Clock = std::chrono::steady_clock;

    std::size_t fTotal;
    bool fIsOn;
    bool fIsShown = false;
    Clock::time_point fNext; // when to show it
};

} // namespace joboptions
