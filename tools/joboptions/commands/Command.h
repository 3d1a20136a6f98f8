// A command of the tool.
#pragma once

#include "tools/joboptions/commands/Options.h"
#include "tools/joboptions/commands/Output.h"

#include <CLI/App.hpp>
#include <memory>

namespace joboptions {

// A command adds itself to the program; parsing the command line fills its arguments.
class Command {
public:
    virtual ~Command() = default;
    Command(Command const&) = delete;
    Command& operator=(Command const&) = delete;

    // Whether this command was called.
    bool IsChosen() const { return fCommand->parsed(); }

    // Runs the command. Returns the exit status; throws Failure.
    virtual Status Run() const = 0;

protected:
    // REQUIRES: program and options outlive this.
    Command(CLI::App& program, Options const& options, char const* name, char const* purpose)
        : fOptions(options),
          fCommand(program.add_subcommand(name, purpose)) {}

    // The parser of this command. Parsing stores into the variables of its options.
    CLI::App& Parser() { return *fCommand; }

    Options const& fOptions;

private:
    CLI::App* fCommand;
};

// Adds a command to program. REQUIRES: program and options outlive it.
using MakeCommand = std::unique_ptr<Command>(CLI::App& program, Options& options);

template <class Kind>
std::unique_ptr<Command> Make(CLI::App& program, Options& options) {
    return std::make_unique<Kind>(program, options);
}

// The commands. The file of each describes it.
extern MakeCommand* const kMakeShowCommand;
extern MakeCommand* const kMakeGetCommand;
extern MakeCommand* const kMakeExplainCommand;
extern MakeCommand* const kMakeNewCommand;
extern MakeCommand* const kMakeSetCommand;
extern MakeCommand* const kMakeUnsetCommand;
extern MakeCommand* const kMakeCheckCommand;
extern MakeCommand* const kMakeDiffCommand;
extern MakeCommand* const kMakeCompareCommand;
extern MakeCommand* const kMakeMergeCommand;
extern MakeCommand* const kMakeFmtCommand;
extern MakeCommand* const kMakeExportCommand;
extern MakeCommand* const kMakeImportCommand;
extern MakeCommand* const kMakeListCommand;
extern MakeCommand* const kMakeFolderCommand;
extern MakeCommand* const kMakeWatchCommand;
extern MakeCommand* const kMakeDescribeCommand;
extern MakeCommand* const kMakeManualCommand;
extern MakeCommand* const kMakeCompleteCommand;
extern MakeCommand* const kMakeCompletionCommand;

} // namespace joboptions
