#include "tools/joboptions/completion/CompletionCommand.h"

#include "tools/joboptions/commands/Result.h"
#include "tools/joboptions/commands/SchemaOption.h"
#include "tools/joboptions/completion/CompletionScripts.h"

#include <CLI/CLI.hpp>

namespace joboptions {

CompletionCommand::CompletionCommand(CLI::App& program, Options& options)
    : Command(program, "completion", "Write completions for a shell"),
      fProgram(program),
      fOptions(options) {
    Parser()
        .add_option("SHELL", fShell, "bash, zsh or fish")
        ->required()
        ->check(CLI::IsMember({"bash", "zsh", "fish"}))
        ->type_name("");
    AddSchema(Parser(), options);
    AddOptions(Parser(), options);
    Parser().footer("Examples:\n"
                    "  source <(joboptions completion bash)\n"
                    "  joboptions completion zsh > ~/.zfunc/_joboptions\n"
                    "  joboptions completion fish > ~/.config/fish/completions/joboptions.fish");
}

Status CompletionCommand::Run() const {
    pdfsettings::Component const component;
    auto const keys = CompletedKeys(ReadSchema(component, fOptions).Settings());
    auto const commands = CompletedCommands(fProgram);
    if (fShell == "bash") {
        WriteResult(fOptions, BashCompletion(commands, keys));
    } else if (fShell == "zsh") {
        WriteResult(fOptions, ZshCompletion(commands, keys));
    } else {
        WriteResult(fOptions, FishCompletion(commands, keys));
    }
    return Status::kDone;
}

} // namespace joboptions
