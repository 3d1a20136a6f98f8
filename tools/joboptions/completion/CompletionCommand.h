// joboptions completion: completions for shells.
#pragma once

#include "tools/joboptions/commands/Command.h"
#include "tools/joboptions/commands/Options.h"

#include <string>

namespace joboptions {

// Writes the script that makes a shell complete commands, options, keys and values.
class CompletionCommand : public Command {
public:
    // REQUIRES: program and options outlive this.
    CompletionCommand(CLI::App& program, Options& options);

    // Status::kDone.
    Status Run() const override;

private:
    CLI::App const& fProgram;
    Options const& fOptions;
    std::string fShell;
};

} // namespace joboptions
