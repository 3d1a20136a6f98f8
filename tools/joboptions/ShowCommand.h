// joboptions show: all settings of a file.
#pragma once

#include "tools/joboptions/Failure.h"
#include "tools/joboptions/Options.h"

#include <string>

namespace joboptions {

// Reads a file and writes all of its settings, as a tree or as JSON.
class ShowCommand {
public:
    // Adds the command to program. REQUIRES: this and options outlive the parsing.
    ShowCommand(CLI::App& program, Options& options);

    bool IsChosen() const;

    // Status::kDone. Throws Failure.
    Status Run() const;

private:
    Options const& fOptions;
    CLI::App* fCommand;
    std::string fFile;
    bool fJson = false;
};

} // namespace joboptions
