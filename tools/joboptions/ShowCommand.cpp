#include "tools/joboptions/ShowCommand.h"

#include "tools/joboptions/Input.h"
#include "tools/joboptions/Output.h"
#include "tools/joboptions/Tree.h"
#include "tools/joboptions/ValueJson.h"

#include <CLI/CLI.hpp>

namespace joboptions {

ShowCommand::ShowCommand(CLI::App& program, Options& options)
    : fOptions(options),
      fCommand(program.add_subcommand("show", "Show all settings of a file")) {
    fCommand->add_option("FILE", fFile, "The settings file; - is standard input")
        ->required()
        ->type_name("");
    fCommand->add_flag("--json", fJson, "Write JSON");
    AddOptions(*fCommand, options);
    fCommand->footer("Examples:\n"
                     "  joboptions show office.joboptions\n"
                     "  joboptions show --json office.joboptions > office.json\n"
                     "  joboptions show - < office.joboptions");
}

bool ShowCommand::IsChosen() const {
    return fCommand->parsed();
}

Status ShowCommand::Run() const {
    pdfsettings::Dictionary const settings = ReadSettings(fFile);
    WriteOutput(
        fJson ? JsonDocument("settings", settings, fFile)
              : TreeText(settings, UseColor(fOptions.color)));
    return Status::kDone;
}

} // namespace joboptions
