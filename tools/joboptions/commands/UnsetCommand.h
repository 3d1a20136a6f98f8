// joboptions unset: takes settings out of a file.
#pragma once

#include "tools/joboptions/commands/Change.h"
#include "tools/joboptions/commands/Command.h"
#include "tools/joboptions/commands/Options.h"

#include <string>
#include <vector>

namespace joboptions {

// Takes keys out of a file, all of them or, if one is missing or the schema refuses the rest, none.
class UnsetCommand : public Command {
public:
    // REQUIRES: program and options outlive this.
    UnsetCommand(CLI::App& program, Options& options);

    // Status::kDone, Status::kNo when there is no such key, or Status::kRefused with all faults
    // when the schema does not allow the result.
    Status Run() const override;

private:
    Status Unset(Editing const& editing) const;

    Options const& fOptions;
    std::string fFile;
    std::vector<std::string> fKeys;
};

} // namespace joboptions
