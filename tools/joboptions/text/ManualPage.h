// The manual page.
#pragma once

#include <CLI/App.hpp>
#include <string>

namespace joboptions {

// The page of a program in the language of man(7), from all that the program knows of its commands
// and options.
std::string ManualPage(CLI::App const& program);

} // namespace joboptions
