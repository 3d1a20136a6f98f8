// A command of the tool.
#pragma once

#include "tools/joboptions/commands/Failure.h"

#include <CLI/App.hpp>

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

} // namespace joboptions
