// joboptions show: all settings of a file.
#pragma once

#include "tools/joboptions/commands/Command.h"
#include "tools/joboptions/commands/Options.h"

namespace joboptions {

// Reads a file and writes all of its settings, as a tree or as JSON.
class ShowCommand : public Command {
public:
    // REQUIRES: program and options outlive this.
    ShowCommand(CLI::App& program, Options& options);

    // Status::kDone.
    Status Run() const override;

private:
    Options const& fOptions;
    std::string fFile;
};

} // namespace joboptions
