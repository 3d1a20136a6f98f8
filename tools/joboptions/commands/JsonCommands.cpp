// joboptions export and import: settings as JSON and back.
#include "tools/joboptions/commands/Command.h"

#include "pdfsettings/Component.h"
#include "pdfsettings/Settings.h"
#include "tools/joboptions/commands/Input.h"
#include "tools/joboptions/commands/ListEntries.h"
#include "tools/joboptions/commands/Replace.h"
#include "tools/joboptions/json/JsonDocuments.h"
#include "tools/joboptions/json/JsonReader.h"
#include "tools/joboptions/text/Layout.h"

#include <CLI/CLI.hpp>
#include <string>

namespace joboptions {

namespace {

// Writes all settings of a file as JSON, without loss.
class ExportCommand final : public Command {
public:
    ExportCommand(CLI::App& program, Options& options)
        : Command(program, options, "export", "Write all settings of a file as JSON") {
        AddFile(Parser(), options, fFile);
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer(
            "Nothing of the settings is lost: import makes of it what fmt makes of FILE.\n"
            "\n"
            "Examples:\n"
            "  joboptions export office.joboptions -o office.json\n"
            "  joboptions export office.joboptions | jq .settings.CompatibilityLevel");
    }

    Status Run() const override {
        std::string const file = Locate(fFile, fOptions);
        WriteResult(fOptions, JsonDocument("settings", ReadSettings(file), file));
        return Status::kDone;
    }

private:
    std::string fFile;
};

// Writes the settings that were exported in the component's own layout.
class ImportCommand final : public Command {
public:
    ImportCommand(CLI::App& program, Options& options)
        : Command(program, options, "import", "Make a settings file of exported JSON") {
        AddArgument(Parser(), "JSON", fFile, "What export wrote; without it, standard input");
        AddOptions(Parser(), options);
        Parser().footer("Examples:\n"
                        "  joboptions import office.json -o office.joboptions\n"
                        "  joboptions export a.joboptions | joboptions import > b.joboptions");
    }

    Status Run() const override {
        pdfsettings::Dictionary const values =
            ReadJsonDocument("settings", ReadBytes(fFile), fFile);
        pdfsettings::Component const component;
        auto const settings = pdfsettings::Settings::FromValues(component, values);
        WriteResult(fOptions, LayOut(component, settings, fFile));
        return Status::kDone;
    }

private:
    std::string fFile = "-";
};

} // namespace

std::unique_ptr<Command> MakeExportCommand(CLI::App& program, Options& options) {
    return std::make_unique<ExportCommand>(program, options);
}

std::unique_ptr<Command> MakeImportCommand(CLI::App& program, Options& options) {
    return std::make_unique<ImportCommand>(program, options);
}

} // namespace joboptions
