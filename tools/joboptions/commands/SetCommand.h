// joboptions set: changes settings of a file.
#pragma once

#include "tools/joboptions/commands/Change.h"
#include "tools/joboptions/commands/Command.h"
#include "tools/joboptions/commands/Options.h"

#include <string>
#include <vector>

namespace joboptions {

// Changes values in a file, all of them or, if the schema refuses a single one, none.
class SetCommand : public Command {
public:
    // REQUIRES: program and options outlive this.
    SetCommand(CLI::App& program, Options& options);

    // Status::kDone, or Status::kRefused with all faults when the schema does not allow the result.
    Status Run() const override;

private:
    Status Set(Editing const& editing) const;

    Options const& fOptions;
    std::string fFile;
    std::vector<std::string> fAssignments;
};

} // namespace joboptions
