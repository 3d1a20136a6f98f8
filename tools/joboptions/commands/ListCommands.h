// joboptions list, folder: which settings there are and where they lie.
#pragma once

#include "tools/joboptions/commands/Command.h"
#include "tools/joboptions/commands/Options.h"

namespace joboptions {

// Writes the settings of both folders, without those that are hidden from the application.
class ListCommand : public Command {
public:
    // REQUIRES: program and options outlive this.
    ListCommand(CLI::App& program, Options& options);

    // Status::kDone, also for an empty list.
    Status Run() const override;

private:
    Options const& fOptions;
    bool fIsAll = false;
    bool fIsLong = false;
};

// Writes the path of the user's settings folder or of the administrator's.
class FolderCommand : public Command {
public:
    // REQUIRES: program and options outlive this.
    FolderCommand(CLI::App& program, Options& options);

    // Status::kDone, or Status::kNo when there is no such folder.
    Status Run() const override;

private:
    Options const& fOptions;
    bool fIsAdmins = false;
};

} // namespace joboptions
