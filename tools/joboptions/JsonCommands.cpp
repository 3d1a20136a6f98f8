#include "tools/joboptions/JsonCommands.h"

#include "host/Component.h"
#include "host/Settings.h"
#include "tools/joboptions/Input.h"
#include "tools/joboptions/JsonDocuments.h"
#include "tools/joboptions/JsonReader.h"
#include "tools/joboptions/Layout.h"
#include "tools/joboptions/Locate.h"

#include <CLI/CLI.hpp>

namespace joboptions {

namespace {

std::string OutputOf(Options const& options) {
    return options.output.empty() ? "-" : options.output;
}

} // namespace

ExportCommand::ExportCommand(CLI::App& program, Options& options)
    : Command(program, "export", "Write all settings of a file as JSON"),
      fOptions(options) {
    AddFile(Parser(), options, fFile);
    AddOutput(Parser(), options, "Write there, not to standard output");
    AddOptions(Parser(), options);
    Parser().footer("Nothing of the settings is lost: import makes of it what fmt makes of FILE.\n"
                    "\n"
                    "Examples:\n"
                    "  joboptions export office.joboptions -o office.json\n"
                    "  joboptions export office.joboptions | jq .settings.CompatibilityLevel");
}

Status ExportCommand::Run() const {
    std::string const file = Locate(fFile, fOptions);
    WriteFile(OutputOf(fOptions), JsonDocument("settings", ReadSettings(file), file));
    return Status::kDone;
}

ImportCommand::ImportCommand(CLI::App& program, Options& options)
    : Command(program, "import", "Make a settings file of exported JSON"),
      fOptions(options) {
    Parser()
        .add_option("JSON", fFile, "What export wrote; without it, standard input")
        ->type_name("");
    AddOutput(Parser(), options, "Write there, not to standard output");
    AddOptions(Parser(), options);
    Parser().footer("Examples:\n"
                    "  joboptions import office.json -o office.joboptions\n"
                    "  joboptions export a.joboptions | joboptions import > b.joboptions");
}

Status ImportCommand::Run() const {
    pdfsettings::Dictionary const values = ReadJsonDocument("settings", ReadBytes(fFile), fFile);
    pdfsettings::Component const component;
    auto const settings = pdfsettings::Settings::FromValues(component, values);
    WriteFile(OutputOf(fOptions), LayOut(component, settings, fFile));
    return Status::kDone;
}

} // namespace joboptions
