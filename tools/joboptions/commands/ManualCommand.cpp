#include "tools/joboptions/commands/ManualCommand.h"

#include "tools/joboptions/commands/Result.h"
#include "tools/joboptions/text/ManualPage.h"

#include <CLI/CLI.hpp>

namespace joboptions {

ManualCommand::ManualCommand(CLI::App& program, Options& options)
    : Command(program, "manual", "Write the manual page"),
      fProgram(program),
      fOptions(options) {
    AddOptions(Parser(), options);
    Parser().footer("Examples:\n"
                    "  joboptions manual | man -l -");
}

Status ManualCommand::Run() const {
    WriteResult(fOptions, ManualPage(fProgram));
    return Status::kDone;
}

} // namespace joboptions
