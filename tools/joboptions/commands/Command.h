// A command of the tool.
#pragma once

#include "tools/joboptions/commands/Options.h"
#include "tools/joboptions/commands/Output.h"

#include <CLI/App.hpp>
#include <memory>

namespace joboptions {

// Each command adds itself to the program, whose parsing fills its arguments.
class Command {
public:
    virtual ~Command() = default;
    Command(Command const&) = delete;
    Command& operator=(Command const&) = delete;

    // Whether it is the one that was called.
    bool IsChosen() const { return fCommand->parsed(); }

    // Does the work. The exit status, Status::kDone if nothing else is said; throws Failure.
    virtual Status Run() const = 0;

protected:
    // REQUIRES: program and options outlive this.
    Command(CLI::App& program, Options const& options, char const* name, char const* purpose)
        : fOptions(options),
          fCommand(program.add_subcommand(name, purpose)) {}

    // Its part of the command line. Parsing stores into what is added here.
    CLI::App& Parser() { return *fCommand; }

    Options const& fOptions;

private:
    CLI::App* fCommand;
};

// The commands, each described in its own file. Each adds itself to program; program and options
// outlive it.
using MakeCommand = std::unique_ptr<Command>(CLI::App& program, Options& options);

MakeCommand MakeShowCommand;
MakeCommand MakeGetCommand;
MakeCommand MakeSetCommand;
MakeCommand MakeUnsetCommand;
MakeCommand MakeCheckCommand;
MakeCommand MakeDiffCommand;
MakeCommand MakeFmtCommand;
MakeCommand MakeExportCommand;
MakeCommand MakeImportCommand;
MakeCommand MakeListCommand;
MakeCommand MakeFolderCommand;
MakeCommand MakeDescribeCommand;
MakeCommand MakeManualCommand;
MakeCommand MakeCompleteCommand;
MakeCommand MakeCompletionCommand;

} // namespace joboptions
