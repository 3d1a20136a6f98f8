// Long output on a terminal.
#pragma once

#include <cstddef>
#include <string>

namespace joboptions {

// The width of the terminal that standard output is, in cells; 80 if it is none or does not say.
std::size_t TerminalWidth();

// Writes text to standard output: through the pager that PAGER names, else less, if standard output
// is a terminal and text is longer than it. Throws Failure as WriteOutput.
void WritePaged(std::string const& text);

} // namespace joboptions
