#include "tools/joboptions/completion/CompletionScripts.h"

#include "tools/joboptions/completion/CompletionWords.h"

#include <fmt/format.h>

namespace joboptions {

namespace {

std::string ZshOptions(CompletedCommand const& command) {
    std::string text;
    for (CompletedOption const& option : command.options) {
        for (std::string const& name : option.names) {
            text += " " + Quoted(name + ":" + option.help);
        }
    }
    return text;
}

std::string ZshWords(Commands const& commands) {
    return WordCases(commands, "$words[2]", "compadd -- {}");
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

} // namespace joboptions
