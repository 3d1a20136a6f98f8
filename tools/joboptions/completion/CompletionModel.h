// What a shell can complete: the commands and options of the program, keys and values of a schema.
#pragma once

#include "pdfsettings/Schema.h"

#include <CLI/App.hpp>
#include <string>
#include <vector>

namespace joboptions {

// What stands at a place of the command line.
enum class Completion { kNothing, kFile, kChoice };

struct CompletedOption {
    std::vector<std::string> names; // with their dashes
    std::string help;
    bool takesValue;
    Completion value;
    std::vector<std::string> choices; // for Completion::kChoice
};

struct CompletedCommand {
    std::string name;
    std::string help;
    std::vector<CompletedOption> options;
    bool takesFile;                 // as its first argument
    bool takesKeys;                 // behind that
    bool takesAssignments;          // KEY=VALUE, likewise
    std::vector<std::string> words; // what its argument is one of; empty for any other argument
};

struct CompletedKey {
    std::string key;
    std::vector<std::string> values; // as they stand in a file; empty where there is no list
};

CompletedOption MakeCompletedOption(CLI::Option const& option);

// The commands of a program in their order.
std::vector<CompletedCommand> CompletedCommands(CLI::App const& program);

// The keys that the rules know, without those of array elements. Keys and values that a shell might
// take for more than a word are left out.
std::vector<CompletedKey> CompletedKeys(std::vector<pdfsettings::SettingRule> const& rules);

} // namespace joboptions
