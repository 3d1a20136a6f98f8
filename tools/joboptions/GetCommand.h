// joboptions get: single values of a file.
#pragma once

#include "host/Value.h"
#include "tools/joboptions/Failure.h"
#include "tools/joboptions/Options.h"

#include <string>
#include <vector>

namespace joboptions {

// Reads a file and writes the values under the given keys, a line for each or as JSON.
class GetCommand {
public:
    // Adds the command to program. REQUIRES: this and options outlive the parsing.
    GetCommand(CLI::App& program, Options& options);

    bool IsChosen() const;

    // Status::kDone, or Status::kNo when a key is missing: what was found is written all the same.
    // Throws Failure.
    Status Run() const;

private:
    void WriteMissing(std::vector<std::string> const& keys) const;

    Options const& fOptions;
    CLI::App* fCommand;
    std::string fFile;
    std::vector<std::string> fKeys;
    bool fJson = false;
};

} // namespace joboptions
