#include "tools/joboptions/completion/CompletionModel.h"

#include "tools/joboptions/text/ValueText.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <string_view>

namespace joboptions {

namespace {

std::vector<std::string> NamesOf(CLI::Option const& option) {
    std::vector<std::string> names;
    for (std::string const& name : option.get_snames()) {
        names.push_back("-" + name);
    }
    for (std::string const& name : option.get_lnames()) {
        names.push_back("--" + name);
    }
    return names;
}

CompletedCommand MakeCommand(CLI::App const& parser) {
    CompletedCommand command{
        parser.get_name(), parser.get_description(), {}, false, false, false, {}};
    for (CLI::Option const* const option : parser.get_options()) {
        std::string const place = option->get_name(/*positional=*/true);
        if (!option->get_positional() && !option->get_group().empty()) {
            command.options.push_back(MakeCompletedOption(*option));
        }
        command.takesFile |= place == "FILE" || place == "A";
        command.takesKeys |= place == "KEY";
        command.takesAssignments |= place == "KEY=VALUE";
        if (place == "SHELL") {
            command.words = {"bash", "zsh", "fish"};
        }
    }
    return command;
}

// Shells look into the words that they are to choose from.
bool IsPlainWord(std::string const& word) {
    return std::ranges::all_of(word, [](char letter) {
        bool const isLetter = (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z');
        return isLetter || std::string_view("0123456789_./+-").find(letter) != std::string::npos;
    });
}

std::vector<std::string> ValuesOf(pdfsettings::SettingRule const& rule) {
    std::vector<std::string> values;
    std::ranges::transform(rule.allowed, std::back_inserter(values), &OneLine);
    std::erase_if(values, [](std::string const& value) { return !IsPlainWord(value); });
    bool const isBoolean = values.empty() && rule.kind == "boolean";
    return isBoolean ? std::vector<std::string>{"true", "false"} : values;
}

} // namespace

CompletedOption MakeCompletedOption(CLI::Option const& option) {
    bool const isColor = option.check_lname("color");
    bool const isFile = option.get_type_name() == "FILE";
    Completion const other = isFile ? Completion::kFile : Completion::kNothing;
    return {
        NamesOf(option),
        option.get_description(),
        option.get_items_expected_max() > 0,
        isColor ? Completion::kChoice : other,
        isColor ? std::vector<std::string>{"auto", "always", "never"} : std::vector<std::string>()};
}

std::vector<CompletedCommand> CompletedCommands(CLI::App const& program) {
    std::vector<CompletedCommand> commands;
    for (CLI::App const* const parser : program.get_subcommands({})) {
        commands.push_back(MakeCommand(*parser));
    }
    return commands;
}

std::vector<CompletedKey> CompletedKeys(std::vector<pdfsettings::SettingRule> const& rules) {
    std::vector<CompletedKey> keys;
    for (pdfsettings::SettingRule const& rule : rules) {
        if (IsPlainWord(rule.key)) {
            keys.push_back({rule.key, ValuesOf(rule)});
        }
    }
    return keys;
}

} // namespace joboptions
