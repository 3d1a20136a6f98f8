#include "tools/joboptions/completion/CompletionScripts.h"

#include "tools/joboptions/completion/CompletionWords.h"

#include <algorithm>
#include <fmt/format.h>

namespace joboptions {

namespace {

// The same for fish, where a backslash escapes within quotes.
std::string FishQuoted(std::string const& text) {
    std::string quoted = "'";
    for (char const letter : text) {
        quoted += letter == '\'' || letter == '\\' ? "\\" : "";
        quoted += letter;
    }
    return quoted + "'";
}

std::string FishOption(CompletedCommand const& command, CompletedOption const& option) {
    std::string line =
        fmt::format("complete -c joboptions -n '__fish_seen_subcommand_from {}'", command.name);
    for (std::string const& name : option.names) {
        line += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
    }
    if (option.takesValue) {
        line += option.value == Completion::kFile ? " -r" : " -x";
    }
    if (!option.choices.empty()) {
        line += " -a " + FishQuoted(Joined(option.choices));
    }
    return line + " -d " + FishQuoted(option.help) + "\n";
}

// Whether there is an argument between the command and the word that is completed.
std::string FishPlaces(Commands const& commands) {
    std::string options = OptionsWithValue(commands);
    std::ranges::replace(options, '|', ' ');
    return fmt::format(
        "function __joboptions_has_file\n"
        "    set -l words (commandline -opc)\n"
        "    set -e words[1..2]\n"
        "    set -l isValue no\n"
        "    for word in $words\n"
        "        if test $isValue = yes\n"
        "            set isValue no\n"
        "        else if contains -- $word {}\n"
        "            set isValue yes\n"
        "        else if not string match -q -- '-*' $word; or test $word = -\n"
        "            return 0\n"
        "        end\n"
        "    end\n"
        "    return 1\n"
        "end\n",
        options);
}

std::string FishWords(Commands const& commands) {
    std::string text;
    for (CompletedCommand const& command : commands) {
        if (!command.words.empty()) {
            text += fmt::format(
                "complete -c joboptions -f -n '__fish_seen_subcommand_from {}' -a {}\n",
                command.name,
                FishQuoted(Joined(command.words)));
        }
    }
    return text;
}

} // namespace

std::string FishCompletion(Commands const& commands, Keys const& keys) {
    std::string text = "# Completions of joboptions for fish.\n" + FishPlaces(commands);
    for (CompletedCommand const& command : commands) {
        text += fmt::format(
            "complete -c joboptions -f -n __fish_use_subcommand -a {} -d {}\n",
            command.name,
            FishQuoted(command.help));
        for (CompletedOption const& option : command.options) {
            text += FishOption(command, option);
        }
    }
    std::vector<std::string> assignments;
    for (auto const& [key, values] : keys) {
        for (std::string const& value : values) {
            assignments.push_back(fmt::format("{}={}", key, value));
        }
        if (values.empty()) {
            assignments.push_back(key + "=");
        }
    }
    for (CompletedCommand const& command : commands) {
        if (!command.takesKeys && !command.takesAssignments) {
            continue;
        }
        text += fmt::format(
            "complete -c joboptions -n '__fish_seen_subcommand_from {}{}' -a {}\n",
            command.name,
            command.takesFile ? "; and __joboptions_has_file" : "",
            FishQuoted(Joined(command.takesKeys ? AllKeys(keys) : assignments)));
    }
    return text + FishWords(commands);
}

} // namespace joboptions
