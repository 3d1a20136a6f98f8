// The options that the commands share.
#pragma once

#include "tools/joboptions/Output.h"

#include <CLI/App.hpp>
#include <string>
#include <vector>

namespace joboptions {

// They mean the same for every command that has them.
struct Options {
    bool quiet = false;
    Color color = Color::kAuto;
    bool json = false;
    bool dryRun = false;
    bool force = false;
    std::string output; // empty: where the command writes to by itself
    std::string schema; // empty: the standard schema
};

// Each of these adds options to command; parsing fills what they are given, which outlives command.

// The options of every command.
void AddOptions(CLI::App& command, Options& options);

void AddJson(CLI::App& command, Options& options);
void AddSchema(CLI::App& command, Options& options);

// -o, whose help says what is written there.
void AddOutput(CLI::App& command, Options& options, char const* help);

// -n and --force, for commands that change files.
void AddDryRun(CLI::App& command, Options& options);
void AddForce(CLI::App& command, Options& options, char const* help);

// The settings file that a command reads.
void AddFile(CLI::App& command, std::string& file);

} // namespace joboptions
