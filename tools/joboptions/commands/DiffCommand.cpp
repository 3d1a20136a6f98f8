// joboptions diff: what differs between two files.
#include "tools/joboptions/commands/Command.h"

#include "tools/joboptions/commands/Input.h"
#include "tools/joboptions/commands/ListEntries.h"
#include "tools/joboptions/commands/Replace.h"
#include "tools/joboptions/json/JsonDocuments.h"
#include "tools/joboptions/text/Differences.h"

#include <CLI/CLI.hpp>
#include <string>

namespace joboptions {

namespace {

// Compares two files by key and value.
class DiffCommand final : public Command {
public:
    DiffCommand(CLI::App& program, Options& options)
        : Command(
              program, options, "diff", "Say what differs between two files, by key and value") {
        AddArgument(Parser(), "A", fBefore, "A settings file; - is standard input")->required();
        AddArgument(Parser(), "B", fAfter, "The settings file that is compared with it")
            ->required();
        AddApplication(Parser(), options, kNamesOfApplication);
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer(
            "A line for each setting that differs: - only in A, + only in B, ~ changed.\n"
            "\n"
            "Examples:\n"
            "  joboptions diff screen.joboptions press.joboptions\n"
            "  joboptions diff --json old.joboptions new.joboptions");
    }

    // Status::kDone when the settings are the same, else Status::kNo.
    Status Run() const override {
        RequireOneStandardInput({fBefore, fAfter});
        pdfsettings::Dictionary const before = ReadSettings(Locate(fBefore, fOptions));
        pdfsettings::Dictionary const after = ReadSettings(Locate(fAfter, fOptions));
        auto const differences = Compare(before, after);
        if (fOptions.json) {
            WriteResult(fOptions, DifferencesDocument(differences, fBefore));
        } else if (!fOptions.quiet) {
            WriteResult(fOptions, DifferencesText(differences, UseColor(fOptions)));
        }
        return differences.empty() ? Status::kDone : Status::kNo;
    }

private:
    std::string fBefore;
    std::string fAfter;
};

} // namespace

std::unique_ptr<Command> MakeDiffCommand(CLI::App& program, Options& options) {
    return std::make_unique<DiffCommand>(program, options);
}

} // namespace joboptions
