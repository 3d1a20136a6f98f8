// The options shared by the commands.
#pragma once

#include "tools/joboptions/commands/Output.h"

#include <CLI/App.hpp>
#include <CLI/Validators.hpp>
#include <optional>
#include <string>
#include <vector>

namespace joboptions {

// An option means the same for every command that has it.
struct Options {
    bool quiet = false;
    Color color = Color::kAuto;
    bool json = false;
    bool dryRun = false;
    bool overwriteChanged = false;
    double wait = 10;                      // seconds, to wait for other programs
    std::string output;                    // empty: the default of the command
    std::optional<std::string> seenOutput; // contents of the output when the command began
    std::string schema;                    // empty: the standard schema
    std::optional<std::string> application;
};

// These functions add options to command. Parsing stores into options and other arguments.
// REQUIRES: these outlive command.

// The options of every command. Call this last: the options that the command lacks are accepted and
// ignored.
void AddOptions(CLI::App& command, Options& options);

void AddJson(CLI::App& command, Options& options);
void AddSchema(CLI::App& command, Options& options);

// -o. help says what is written.
void AddOutput(CLI::App& command, Options& options, char const* help);

// Rejects an empty name of a file or folder.
CLI::Validator NotEmpty();

// -n for commands that change files; --wait and --overwrite-changed for commands that save.
void AddDryRun(CLI::App& command, Options& options);
void AddSaving(CLI::App& command, Options& options);

// --app. help says what it is used for.
void AddApplication(CLI::App& command, Options& options, char const* help);

// The help text for settings that may be named as an application lists them.
inline constexpr char kNamesOfApplication[] =
    "Treat a FILE without a slash as a name shown by list --app NAME";

// A positional argument, stored in target.
template <class Target>
CLI::Option*
AddArgument(CLI::App& command, char const* name, Target& target, char const* help = "") {
    return command.add_option(name, target, help)->type_name("");
}

// The names of an option with their dashes, short ones first.
std::vector<std::string> NamesOf(CLI::Option const& option);

// The commands that the help of a program lists, in order.
std::vector<CLI::App const*> ListedCommands(CLI::App const& program);

// The settings file that a command reads, and --app for its name.
void AddFile(CLI::App& command, Options& options, std::string& file);

} // namespace joboptions
