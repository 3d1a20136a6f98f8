// joboptions manual: the manual page.
#pragma once

#include "tools/joboptions/commands/Command.h"
#include "tools/joboptions/commands/Options.h"

namespace joboptions {

// Writes the manual page, for those who package the program.
class ManualCommand : public Command {
public:
    // REQUIRES: program and options outlive this.
    ManualCommand(CLI::App& program, Options& options);

    // Status::kDone.
    Status Run() const override;

private:
    CLI::App const& fProgram;
    Options const& fOptions;
};

} // namespace joboptions
