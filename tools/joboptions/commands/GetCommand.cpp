// joboptions get: single values of a file.
#include "tools/joboptions/commands/Command.h"

#include "pdfsettings/Path.h"
#include "tools/joboptions/commands/Input.h"
#include "tools/joboptions/commands/ListEntries.h"
#include "tools/joboptions/commands/Replace.h"
#include "tools/joboptions/json/JsonDocuments.h"
#include "tools/joboptions/text/KnownKeys.h"
#include "tools/joboptions/text/ValueText.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <string>
#include <vector>

namespace joboptions {

namespace {

// Reads a file and writes the values under the given keys, a line for each or as JSON.
class GetCommand final : public Command {
public:
    GetCommand(CLI::App& program, Options& options)
        : Command(program, options, "get", "Show single values of a file") {
        AddFile(Parser(), options, fFile);
        AddArgument(
            Parser(),
            "KEY",
            fKeys,
            "Keys, with those of nested settings and positions from 0 behind /")
            ->required();
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer("Examples:\n"
                        "  joboptions get office.joboptions CompatibilityLevel\n"
                        "  joboptions get office.joboptions ColorImageDict/QFactor NeverEmbed/0\n"
                        "  joboptions get --json office.joboptions ColorImageDict");
    }

    // Status::kDone, or Status::kNo when a key is missing: what was found is written all the same.
    Status Run() const override {
        std::string const file = Locate(fFile, fOptions);
        pdfsettings::Dictionary const settings = ReadSettings(file);
        pdfsettings::Dictionary found;
        std::string lines;
        std::vector<std::string> missing;
        for (std::string const& key : fKeys) {
            pdfsettings::Value const* const value = Find(settings, key);
            if (value == nullptr) {
                missing.push_back(MissingKeyText(settings, key));
                continue;
            }
            lines += OneLine(*value) + "\n";
            found.Set(key, *value);
        }
        WriteResult(fOptions, fOptions.json ? JsonDocument("values", found, file) : lines);
        for (std::string const& message : missing) {
            WriteError(fmt::format("{}: {}", InputName(fFile), message), fOptions.quiet);
        }
        return missing.empty() ? Status::kDone : Status::kNo;
    }

private:
    std::string fFile;
    std::vector<std::string> fKeys;
};

} // namespace

std::unique_ptr<Command> MakeGetCommand(CLI::App& program, Options& options) {
    return std::make_unique<GetCommand>(program, options);
}

} // namespace joboptions
