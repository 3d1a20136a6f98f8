// joboptions diff: what differs between two files.
#pragma once

#include "tools/joboptions/commands/Command.h"
#include "tools/joboptions/commands/Options.h"

#include <string>

namespace joboptions {

// Compares two files by key and value.
class DiffCommand : public Command {
public:
    // REQUIRES: program and options outlive this.
    DiffCommand(CLI::App& program, Options& options);

    // Status::kDone when the settings are the same, else Status::kNo.
    Status Run() const override;

private:
    Options const& fOptions;
    std::string fBefore;
    std::string fAfter;
};

} // namespace joboptions
