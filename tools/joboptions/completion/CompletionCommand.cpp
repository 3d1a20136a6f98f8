// joboptions completion: scripts that let shells ask the program what can stand at a place. They
// are fixed: what a schema or a later version adds is offered without a new script. Where the
// program offers nothing, the shell offers files.
#include "tools/joboptions/commands/Command.h"
#include "tools/joboptions/commands/Replace.h"

#include <CLI/CLI.hpp>
#include <map>
#include <string>

namespace joboptions {

namespace {

// Bash takes "=" for a word of its own: what is typed is put together again, and of an assignment
// only the value is offered.
constexpr char kBash[] = R"(# Completions of joboptions for bash.
_joboptions() {
    local word
    local -a words=()
    for word in "${COMP_WORDS[@]:1:COMP_CWORD}"; do
        if ((${#words[@]} > 0)) && [[ $word == = || ${words[-1]} == *= ]]; then
            words[-1]+=$word
        else
            words+=("$word")
        fi
    done
    mapfile -t COMPREPLY < <("$1" complete -- "${words[@]}" 2>/dev/null | cut -f 1)
    if [[ ${words[-1]} == *=* ]]; then
        COMPREPLY=("${COMPREPLY[@]#*=}")
    elif [[ ${COMPREPLY[0]} == *= ]]; then
        compopt -o nospace 2>/dev/null
    fi
}
complete -o default -F _joboptions joboptions
)";

constexpr char kZsh[] = R"(#compdef joboptions
# Completions of joboptions for zsh.
_joboptions() {
    local -a offers assignments
    offers=("${(@f)$("$words[1]" complete -- "${(@Q)words[2,CURRENT-1]}" "$PREFIX" 2>/dev/null)}")
    offers=("${(@)${(@)offers:#}/$'\t'/:}")
    assignments=("${(@M)offers:#*=}")
    offers=("${(@)offers:#*=}")
    if (($#offers + $#assignments == 0)); then
        _files
        return
    fi
    _describe setting assignments -S ''
    _describe word offers
}
if [[ $funcstack[1] == _joboptions ]]; then
    _joboptions "$@"
else
    compdef _joboptions joboptions
fi
)";

constexpr char kFish[] = R"(# Completions of joboptions for fish.
function __joboptions
    set -l words (commandline -opc)
    $words[1] complete -- $words[2..-1] (commandline -ct) 2>/dev/null
end
complete -c joboptions -f -n '__joboptions | string length -q' -a '(__joboptions)'
)";

class CompletionCommand final : public Command {
public:
    CompletionCommand(CLI::App& program, Options& options)
        : Command(program, options, "completion", "Write completions for a shell") {
        AddArgument(Parser(), "SHELL", fShell, "bash, zsh or fish")
            ->required()
            ->check(CLI::IsMember({"bash", "zsh", "fish"}));
        AddOptions(Parser(), options);
        Parser().footer(
            "Examples:\n"
            "  source <(joboptions completion bash)\n"
            "  joboptions completion zsh > ~/.zfunc/_joboptions\n"
            "  joboptions completion fish > ~/.config/fish/completions/joboptions.fish");
    }

    Status Run() const override {
        static std::map<std::string, char const*> const kScripts{
            {"bash", kBash}, {"zsh", kZsh}, {"fish", kFish}};
        WriteResult(fOptions, kScripts.at(fShell));
        return Status::kDone;
    }

private:
    std::string fShell;
};

} // namespace

std::unique_ptr<Command> MakeCompletionCommand(CLI::App& program, Options& options) {
    return std::make_unique<CompletionCommand>(program, options);
}

} // namespace joboptions
