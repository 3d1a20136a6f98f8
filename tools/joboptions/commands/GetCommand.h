// joboptions get: single values of a file.
#pragma once

#include "tools/joboptions/commands/Command.h"
#include "tools/joboptions/commands/Options.h"

#include <string>
#include <vector>

namespace joboptions {

// Reads a file and writes the values under the given keys, a line for each or as JSON.
class GetCommand : public Command {
public:
    // REQUIRES: program and options outlive this.
    GetCommand(CLI::App& program, Options& options);

    // Status::kDone, or Status::kNo when a key is missing: what was found is written all the same.
    Status Run() const override;

private:
    void WriteMissing(std::vector<std::string> const& messages) const;

    Options const& fOptions;
    std::string fFile;
    std::vector<std::string> fKeys;
};

} // namespace joboptions
