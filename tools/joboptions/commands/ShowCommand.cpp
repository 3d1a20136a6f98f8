// joboptions show: all settings of a file.
#include "tools/joboptions/commands/Command.h"

#include "tools/joboptions/commands/Input.h"
#include "tools/joboptions/commands/ListEntries.h"
#include "tools/joboptions/commands/Options.h"
#include "tools/joboptions/commands/Replace.h"
#include "tools/joboptions/json/JsonDocuments.h"
#include "tools/joboptions/text/Tree.h"

#include <CLI/CLI.hpp>
#include <memory>

namespace joboptions {

namespace {

// Reads a file and writes all of its settings, as a tree or as JSON.
class ShowCommand final : public Command {
public:
    ShowCommand(CLI::App& program, Options& options)
        : Command(program, options, "show", "Show all settings of a file") {
        AddFile(Parser(), options, fFile);
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer("Examples:\n"
                        "  joboptions show office.joboptions\n"
                        "  joboptions show --json office.joboptions > office.json\n"
                        "  joboptions show - < office.joboptions");
    }

    // Status::kDone.
    Status Run() const override {
        std::string const file = Locate(fFile, fOptions);
        pdfsettings::Dictionary const settings = ReadSettings(file);
        WriteResult(
            fOptions,
            fOptions.json ? JsonDocument("settings", settings, file)
                          : TreeText(settings, UseColor(fOptions)));
        return Status::kDone;
    }

private:
    std::string fFile;
};

} // namespace

std::unique_ptr<Command> MakeShowCommand(CLI::App& program, Options& options) {
    return std::make_unique<ShowCommand>(program, options);
}

} // namespace joboptions
