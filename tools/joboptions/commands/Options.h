// The options that the commands share.
#pragma once

#include "tools/joboptions/commands/Output.h"

#include <CLI/App.hpp>
#include <optional>
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
    bool overwriteChanged = false;
    double wait = 10;                      // seconds, for others that change files
    std::string output;                    // empty: where the command writes to by itself
    std::optional<std::string> seenOutput; // what stood there when the command began
    std::string schema;                    // empty: the standard schema
    std::optional<std::string> application;
};

// Each of these adds options to command; parsing fills what they are given, which outlives command.

// The options of every command, after its own: what it has none of is taken all the same.
void AddOptions(CLI::App& command, Options& options);

void AddJson(CLI::App& command, Options& options);
void AddSchema(CLI::App& command, Options& options);

// -o, whose help says what is written there.
void AddOutput(CLI::App& command, Options& options, char const* help);

// -n, for commands that change files, and --wait and --overwrite-changed, for those that save.
void AddDryRun(CLI::App& command, Options& options);
void AddSaving(CLI::App& command, Options& options);

// --app, whose help says what it does.
void AddApplication(CLI::App& command, Options& options, char const* help);

// The help where settings may be named as an application lists them.
inline constexpr char kNamesOfApplication[] =
    "A name without a slash is one that list --app shows for this application";

// An argument that is no option's: it is stored in target.
template <class Target>
CLI::Option*
AddArgument(CLI::App& command, char const* name, Target& target, char const* help = "") {
    return command.add_option(name, target, help)->type_name("");
}

// The names of an option with their dashes, the short ones first.
std::vector<std::string> NamesOf(CLI::Option const& option);

// The commands of a program that its help names, in their order.
std::vector<CLI::App const*> ListedCommands(CLI::App const& program);

// The settings file that a command reads, and --app for its name.
void AddFile(CLI::App& command, Options& options, std::string& file);

} // namespace joboptions
