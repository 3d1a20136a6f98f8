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

    // Does the work. The exit status; throws Failure.
    virtual Status Run() const = 0;

protected:
    // REQUIRES: program outlives this.
    Command(CLI::App& program, char const* name, char const* purpose)
        : fCommand(program.add_subcommand(name, purpose)) {}

    // Its part of the command line. Parsing stores into what is added here.
    CLI::App& Parser() { return *fCommand; }

private:
    CLI::App* fCommand;
};

// The commands, each described in its own file. Each adds itself to program; program and options
// outlive it.
std::unique_ptr<Command> MakeShowCommand(CLI::App& program, Options& options);
std::unique_ptr<Command> MakeGetCommand(CLI::App& program, Options& options);
std::unique_ptr<Command> MakeSetCommand(CLI::App& program, Options& options);
std::unique_ptr<Command> MakeUnsetCommand(CLI::App& program, Options& options);
std::unique_ptr<Command> MakeCheckCommand(CLI::App& program, Options& options);
std::unique_ptr<Command> MakeDiffCommand(CLI::App& program, Options& options);
std::unique_ptr<Command> MakeFmtCommand(CLI::App& program, Options& options);
std::unique_ptr<Command> MakeExportCommand(CLI::App& program, Options& options);
std::unique_ptr<Command> MakeImportCommand(CLI::App& program, Options& options);
std::unique_ptr<Command> MakeListCommand(CLI::App& program, Options& options);
std::unique_ptr<Command> MakeFolderCommand(CLI::App& program, Options& options);
std::unique_ptr<Command> MakeDescribeCommand(CLI::App& program, Options& options);
std::unique_ptr<Command> MakeManualCommand(CLI::App& program, Options& options);
std::unique_ptr<Command> MakeCompleteCommand(CLI::App& program, Options& options);
std::unique_ptr<Command> MakeCompletionCommand(CLI::App& program, Options& options);

} // namespace joboptions
