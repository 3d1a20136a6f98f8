// joboptions compare: several sets of settings side by side.
#include "tools/joboptions/commands/Command.h"

#include "tools/joboptions/commands/Files.h"
#include "tools/joboptions/commands/ListCommands.h"
#include "tools/joboptions/commands/Paths.h"
#include "tools/joboptions/commands/Terminal.h"
#include "tools/joboptions/json/JsonDocuments.h"
#include "tools/joboptions/text/Comparison.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace joboptions {

namespace {

class CompareCommand final : public Command {
public:
    CompareCommand(CLI::App& program, Options& options)
        : Command(program, options, "compare", "Compare several files side by side") {
        AddArgument(Parser(), "FILE", fFiles, "Settings files, or folders with such files")
            ->required();
        Parser().add_flag("--all", fShowsAll, "Also settings that are equal in all files");
        Parser().add_flag("--html", fIsPage, "Write a page in HTML that needs nothing else");
        Parser().add_flag("--no-pager", fHasNoPager, "Do not show long output in a pager");
        AddOutput(Parser(), options, "Write the comparison to this file");
        AddApplication(Parser(), options, kNamesOfApplication);
        AddSchema(Parser(), options);
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer(
            "A column for each file, a row for each setting that differs.\n"
            "\n"
            "Examples:\n"
            "  joboptions compare screen.joboptions office.joboptions press.joboptions\n"
            "  joboptions compare --all presets/\n"
            "  joboptions compare --html presets/ -o presets.html");
    }

    // Status::kDone if the settings are equal, else Status::kNo.
    Status Run() const override {
        RequireOneStandardInput(fFiles, fOptions);
        ComparedSets sets = Read();
        bool const areEqual = std::ranges::none_of(
            sets.settings, [](auto const& setting) { return setting.differs; });
        if (!fShowsAll) {
            std::erase_if(sets.settings, [](auto const& setting) { return !setting.differs; });
        }
        if (fOptions.json) {
            WriteResult(fOptions, ComparisonDocument(sets));
        } else if (fIsPage) {
            WriteResult(fOptions, ComparisonPage(sets));
        } else if (!fOptions.quiet && !sets.settings.empty()) {
            WriteText(sets);
        }
        return areEqual ? Status::kDone : Status::kNo;
    }

private:
    ComparedSets Read() const {
        ComparedSets sets;
        std::vector<pdfsettings::Document> documents;
        for (std::string const& argument : fFiles) {
            FoundFiles const found = FindFiles(Locate(argument, fOptions));
            FailIfAny(Status::kBadInput, found.errors);
            for (std::string const& file : found.files) {
                documents.push_back(ReadDocument(file));
                sets.names.push_back(file);
            }
        }
        if (documents.size() < 2) {
            throw Failure(Status::kWrongCall, "expected two settings files or more");
        }
        sets.settings = Tabulate(documents, ReadSchema(fOptions));
        ShortenNames(sets.names);
        return sets;
    }

    // Without folders, if the names alone are different.
    static void ShortenNames(std::vector<std::string>& names) {
        std::vector<std::string> stems;
        stems.reserve(names.size());
        for (std::string const& name : names) {
            stems.push_back(std::filesystem::path(name).stem().string());
        }
        std::vector<std::string> sorted = stems;
        std::ranges::sort(sorted);
        if (std::ranges::adjacent_find(sorted) == sorted.end()) {
            names = std::move(stems);
        }
    }

    void WriteText(ComparedSets const& sets) const {
        bool const isToFile = !fOptions.output.empty();
        std::string const text = ComparisonText(sets, TerminalWidth(), UseColor(fOptions));
        isToFile || fHasNoPager ? WriteResult(fOptions, text) : WritePaged(text);
    }

    std::vector<std::string> fFiles;
    bool fShowsAll = false;
    bool fIsPage = false;
    bool fHasNoPager = false;
};

} // namespace

MakeCommand* const kMakeCompareCommand = &Make<CompareCommand>;

} // namespace joboptions
