// joboptions export and import: settings as JSON and back.
#pragma once

#include "tools/joboptions/commands/Command.h"
#include "tools/joboptions/commands/Options.h"

#include <string>

namespace joboptions {

// Writes all settings of a file as JSON, without loss.
class ExportCommand : public Command {
public:
    // REQUIRES: program and options outlive this.
    ExportCommand(CLI::App& program, Options& options);

    // Status::kDone.
    Status Run() const override;

private:
    Options const& fOptions;
    std::string fFile;
};

// Writes the settings that were exported in the component's own layout.
class ImportCommand : public Command {
public:
    // REQUIRES: program and options outlive this.
    ImportCommand(CLI::App& program, Options& options);

    // Status::kDone.
    Status Run() const override;

private:
    Options const& fOptions;
    std::string fFile = "-";
};

} // namespace joboptions
