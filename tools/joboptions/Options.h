// The options that the commands share.
#pragma once

#include "tools/joboptions/Output.h"

#include <CLI/App.hpp>

namespace joboptions {

// They hold for every command.
struct Options {
    bool quiet = false;
    Color color = Color::kAuto;
};

// Adds the common options to command; parsing fills options, which outlives command.
void AddOptions(CLI::App& command, Options& options);

} // namespace joboptions
