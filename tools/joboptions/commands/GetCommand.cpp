#include "tools/joboptions/commands/GetCommand.h"

#include "pdfsettings/Path.h"
#include "tools/joboptions/commands/Input.h"
#include "tools/joboptions/commands/Locate.h"
#include "tools/joboptions/commands/MissingKey.h"
#include "tools/joboptions/commands/Result.h"
#include "tools/joboptions/json/JsonDocuments.h"
#include "tools/joboptions/text/ValueText.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace joboptions {

GetCommand::GetCommand(CLI::App& program, Options& options)
    : Command(program, "get", "Show single values of a file"),
      fOptions(options) {
    AddFile(Parser(), options, fFile);
    Parser()
        .add_option(
            "KEY", fKeys, "Keys, with those of nested settings and positions from 0 behind /")
        ->required()
        ->type_name("");
    AddJson(Parser(), options);
    AddOptions(Parser(), options);
    Parser().footer("Examples:\n"
                    "  joboptions get office.joboptions CompatibilityLevel\n"
                    "  joboptions get office.joboptions ColorImageDict/QFactor NeverEmbed/0\n"
                    "  joboptions get --json office.joboptions ColorImageDict");
}

Status GetCommand::Run() const {
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
    WriteMissing(missing);
    return missing.empty() ? Status::kDone : Status::kNo;
}

void GetCommand::WriteMissing(std::vector<std::string> const& messages) const {
    for (std::string const& message : messages) {
        if (!fOptions.quiet) {
            WriteError(fmt::format("{}: {}", InputName(fFile), message));
        }
    }
}

} // namespace joboptions
