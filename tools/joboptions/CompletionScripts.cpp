#include "tools/joboptions/CompletionScripts.h"

#include <algorithm>
#include <fmt/format.h>
#include <functional>
#include <set>

namespace joboptions {

namespace {

using Commands = std::vector<CompletedCommand>;
using Keys = std::vector<CompletedKey>;

// text as one word of bash and zsh.
std::string Quoted(std::string const& text) {
    std::string quoted = "'";
    for (char const letter : text) {
        quoted += letter == '\'' ? "'\\''" : std::string(1, letter);
    }
    return quoted + "'";
}

// The same for fish, where a backslash escapes within quotes.
std::string FishQuoted(std::string const& text) {
    std::string quoted = "'";
    for (char const letter : text) {
        quoted += letter == '\'' || letter == '\\' ? "\\" : "";
        quoted += letter;
    }
    return quoted + "'";
}

std::string Joined(std::vector<std::string> const& words) {
    return fmt::format("{}", fmt::join(words, " "));
}

// The names of the commands that are so, with between between them.
std::string Names(Commands const& commands, bool CompletedCommand::*isSo, char const* between) {
    std::vector<std::string> names;
    for (CompletedCommand const& command : commands) {
        if (command.*isSo) {
            names.push_back(command.name);
        }
    }
    return fmt::format("{}", fmt::join(names, between));
}

std::vector<std::string> AllNames(Commands const& commands) {
    std::vector<std::string> names;
    std::ranges::transform(commands, std::back_inserter(names), &CompletedCommand::name);
    return names;
}

std::vector<std::string> AllKeys(Keys const& keys) {
    std::vector<std::string> names;
    std::ranges::transform(keys, std::back_inserter(names), &CompletedKey::key);
    return names;
}

// Commands whose keys come first, with no file before them.
std::string KeysFirst(Commands const& commands) {
    std::vector<std::string> names;
    for (CompletedCommand const& command : commands) {
        if (command.takesKeys && !command.takesFile) {
            names.push_back(command.name);
        }
    }
    return fmt::format("{}", fmt::join(names, "|"));
}

// The names of those options whose value is completed so.
std::vector<std::string>
Choose(std::vector<CompletedOption> const& options, Completion completion) {
    std::vector<std::string> names;
    for (CompletedOption const& option : options) {
        if (option.takesValue && option.value == completion) {
            names.insert(names.end(), option.names.begin(), option.names.end());
        }
    }
    return names;
}

// The same of all commands, for a case of bash and zsh.
std::string OptionsWith(Commands const& commands, Completion completion) {
    std::set<std::string> names;
    for (CompletedCommand const& command : commands) {
        auto const options = Choose(command.options, completion);
        names.insert(options.begin(), options.end());
    }
    return fmt::format("{}", fmt::join(names, "|"));
}

// The names of all options that have a value behind them.
std::string OptionsWithValue(Commands const& commands) {
    std::vector<std::string> names;
    for (Completion const kind : {Completion::kNothing, Completion::kFile, Completion::kChoice}) {
        names.push_back(OptionsWith(commands, kind));
    }
    return fmt::format("{}", fmt::join(names, "|"));
}

// Counts the arguments between the command and the word that is completed, in bash and zsh, whose
// arrays begin with different numbers.
std::string
CountPlaces(Commands const& commands, int first, std::string const& words, char const* end) {
    return fmt::format(
        "    local place=0 i\n"
        "    for ((i = {}; i < {}; ++i)); do\n"
        "        case {} in\n"
        "        {}) ((++i)) ;;\n"
        "        -?*) ;;\n"
        "        *) ((++place)) ;;\n"
        "        esac\n"
        "    done\n",
        first,
        end,
        words,
        OptionsWithValue(commands));
}

// "    case $word in", a line for each of the keys with values, "esac".
std::string ValueCases(Keys const& keys, std::string const& word, std::string const& variable) {
    std::string text = fmt::format("        case {} in\n", word);
    for (auto const& [key, values] : keys) {
        if (!values.empty()) {
            std::vector<std::string> words;
            std::ranges::transform(values, std::back_inserter(words), &Quoted);
            text += fmt::format("        {}) {}=({}) ;;\n", key, variable, Joined(words));
        }
    }
    return text + "        esac\n";
}

std::string OptionNames(CompletedCommand const& command) {
    std::vector<std::string> names;
    for (CompletedOption const& option : command.options) {
        names.insert(names.end(), option.names.begin(), option.names.end());
    }
    return Joined(names);
}

std::string ZshOptions(CompletedCommand const& command) {
    std::string text;
    for (CompletedOption const& option : command.options) {
        for (std::string const& name : option.names) {
            text += " " + Quoted(name + ":" + option.help);
        }
    }
    return text;
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

// The commands with words of their own, each a case with what completes it in place of the braces.
std::string WordCases(Commands const& commands, std::string const& word, char const* offer) {
    std::string text = fmt::format("    case {} in\n", word);
    for (CompletedCommand const& command : commands) {
        if (!command.words.empty()) {
            text += fmt::format("    {}) ", command.name) +
                    fmt::format(fmt::runtime(offer), Joined(command.words)) + "; return ;;\n";
        }
    }
    return text + "    esac\n";
}

std::string BashWords(Commands const& commands) {
    return WordCases(
        commands, "$command", "mapfile -t COMPREPLY < <(compgen -W '{}' -- \"$word\")");
}

std::string ZshWords(Commands const& commands) {
    return WordCases(commands, "$words[2]", "compadd -- {}");
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

// How bash completes the value of an assignment.
std::string BashAssignments(Keys const& keys) {
    std::string text = "    # The sign of an assignment is a word of its own here.\n"
                       "    if [[ $word == = ]]; then\n"
                       "        key=$before word=\n"
                       "    elif [[ $before == = ]]; then\n"
                       "        key=${COMP_WORDS[COMP_CWORD-2]}\n"
                       "    fi\n"
                       "    if [[ -n $key ]]; then\n";
    text += ValueCases(keys, "$key", "words");
    text += "        mapfile -t COMPREPLY < <(compgen -W \"${words[*]}\" -- \"$word\")\n"
            "        return\n"
            "    fi\n";
    return text;
}

// The beginning of the script for zsh, up to where commands are completed.
std::string ZshCommands(Commands const& commands) {
    std::string text = "#compdef joboptions\n"
                       "# Completions of joboptions for zsh.\n"
                       "_joboptions() {\n"
                       "    local -a commands options keys values\n"
                       "    commands=(";
    for (CompletedCommand const& command : commands) {
        text += "\n        " + Quoted(command.name + ":" + command.help);
    }
    text += "\n    )\n"
            "    if ((CURRENT == 2)); then\n"
            "        _describe command commands\n"
            "        return\n"
            "    fi\n"
            "    case $words[CURRENT-1] in\n";
    return text;
}

} // namespace

std::string BashCompletion(Commands const& commands, Keys const& keys) {
    std::string text =
        "# Completions of joboptions for bash.\n"
        "_joboptions() {\n"
        "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]}\n"
        "    local command=${COMP_WORDS[1]} key= options=\n"
        "    local -a words=()\n"
        "    COMPREPLY=()\n"
        "    if ((COMP_CWORD == 1)); then\n";
    text += fmt::format(
        "        mapfile -t COMPREPLY < <(compgen -W '{}' -- \"$word\")\n"
        "        return\n"
        "    fi\n",
        Joined(AllNames(commands)));
    text += BashAssignments(keys);
    text += "    case $before in\n";
    text += fmt::format(
        "    {}) return ;;\n"
        "    {}) mapfile -t COMPREPLY < <(compgen -W 'auto always never' -- \"$word\"); return ;;\n"
        "    esac\n"
        "    case $command in\n",
        OptionsWith(commands, Completion::kFile) + "|" +
            OptionsWith(commands, Completion::kNothing),
        OptionsWith(commands, Completion::kChoice));
    for (CompletedCommand const& command : commands) {
        text += fmt::format("    {}) options='{}' ;;\n", command.name, OptionNames(command));
    }
    text += fmt::format(
        "    esac\n"
        "    if [[ $word == -* ]]; then\n"
        "        mapfile -t COMPREPLY < <(compgen -W \"$options\" -- \"$word\")\n"
        "        return\n"
        "    fi\n"
        "    local keys='{}'\n"
        "{}"
        "    case $command in\n"
        "    {}) ;;\n"
        "    *) ((place > 0)) || return ;;\n"
        "    esac\n"
        "    case $command in\n"
        "    {}) mapfile -t COMPREPLY < <(compgen -W \"$keys\" -- \"$word\") ;;\n"
        "    {})\n"
        "        mapfile -t COMPREPLY < <(compgen -S = -W \"$keys\" -- \"$word\")\n"
        "        compopt -o nospace 2>/dev/null\n"
        "        ;;\n"
        "    esac\n"
        "}}\n"
        "complete -o default -F _joboptions joboptions\n",
        Joined(AllKeys(keys)),
        CountPlaces(commands, 2, "${COMP_WORDS[i]}", "COMP_CWORD") + BashWords(commands),
        KeysFirst(commands),
        Names(commands, &CompletedCommand::takesKeys, "|"),
        Names(commands, &CompletedCommand::takesAssignments, "|"));
    return text;
}

std::string ZshCompletion(Commands const& commands, Keys const& keys) {
    std::string text = ZshCommands(commands);
    text += fmt::format(
        "    {}) _files; return ;;\n"
        "    {}) return ;;\n"
        "    {}) compadd -- auto always never; return ;;\n"
        "    esac\n"
        "    case $words[2] in\n",
        OptionsWith(commands, Completion::kFile),
        OptionsWith(commands, Completion::kNothing),
        OptionsWith(commands, Completion::kChoice));
    for (CompletedCommand const& command : commands) {
        text += fmt::format("    {}) options=({}) ;;\n", command.name, ZshOptions(command));
    }
    text += fmt::format(
        "    esac\n"
        "    if [[ $PREFIX == -* ]]; then\n"
        "        _describe option options\n"
        "        return\n"
        "    fi\n"
        "    if [[ $words[2] == ({}) && $PREFIX == *=* ]]; then\n",
        Names(commands, &CompletedCommand::takesAssignments, "|"));
    text += ValueCases(keys, "${PREFIX%%=*}", "values");
    text += fmt::format(
        "        compset -P '*='\n"
        "        compadd -- $values\n"
        "        return\n"
        "    fi\n"
        "    keys=({})\n"
        "{}"
        "    if ((place == 0)) && [[ $words[2] != ({}) ]]; then\n"
        "        _files\n"
        "        return\n"
        "    fi\n"
        "    case $words[2] in\n"
        "    {}) compadd -- $keys ;;\n"
        "    {}) compadd -S = -- $keys ;;\n"
        "    *) _files ;;\n"
        "    esac\n"
        "}}\n"
        "if [[ $funcstack[1] == _joboptions ]]; then\n"
        "    _joboptions \"$@\"\n"
        "else\n"
        "    compdef _joboptions joboptions\n"
        "fi\n",
        Joined(AllKeys(keys)),
        CountPlaces(commands, 3, "$words[i]", "CURRENT") + ZshWords(commands),
        KeysFirst(commands),
        Names(commands, &CompletedCommand::takesKeys, "|"),
        Names(commands, &CompletedCommand::takesAssignments, "|"));
    return text;
}

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
