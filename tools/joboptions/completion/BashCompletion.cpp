#include "tools/joboptions/completion/CompletionScripts.h"

#include "tools/joboptions/completion/CompletionWords.h"

#include <fmt/format.h>

namespace joboptions {

namespace {

std::string OptionNames(CompletedCommand const& command) {
    std::vector<std::string> names;
    for (CompletedOption const& option : command.options) {
        names.insert(names.end(), option.names.begin(), option.names.end());
    }
    return Joined(names);
}

std::string BashWords(Commands const& commands) {
    return WordCases(
        commands, "$command", "mapfile -t COMPREPLY < <(compgen -W '{}' -- \"$word\")");
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

} // namespace joboptions
