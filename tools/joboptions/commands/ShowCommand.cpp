#include "tools/joboptions/commands/ShowCommand.h"

#include "tools/joboptions/commands/Input.h"
#include "tools/joboptions/commands/Locate.h"
#include "tools/joboptions/commands/Result.h"
#include "tools/joboptions/json/JsonDocuments.h"
#include "tools/joboptions/text/Tree.h"

#include <CLI/CLI.hpp>

namespace joboptions {

ShowCommand::ShowCommand(CLI::App& program, Options& options)
    : Command(program, "show", "Show all settings of a file"),
      fOptions(options) {
    AddFile(Parser(), options, fFile);
    AddJson(Parser(), options);
    AddOptions(Parser(), options);
    Parser().footer("Examples:\n"
                    "  joboptions show office.joboptions\n"
                    "  joboptions show --json office.joboptions > office.json\n"
                    "  joboptions show - < office.joboptions");
}

Status ShowCommand::Run() const {
    std::string const file = Locate(fFile, fOptions);
    pdfsettings::Dictionary const settings = ReadSettings(file);
    WriteResult(
        fOptions,
        fOptions.json ? JsonDocument("settings", settings, file)
                      : TreeText(settings, UseColor(fOptions)));
    return Status::kDone;
}

} // namespace joboptions
