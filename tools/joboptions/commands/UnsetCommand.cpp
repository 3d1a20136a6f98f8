// joboptions unset: takes settings out of a file.
#include "tools/joboptions/commands/Command.h"

#include "pdfsettings/Path.h"
#include "pdfsettings/Splice.h"
#include "tools/joboptions/commands/Change.h"
#include "tools/joboptions/commands/Input.h"
#include "tools/joboptions/text/KnownKeys.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <string>
#include <vector>

namespace joboptions {

namespace {

using pdfsettings::Dictionary;

// Throws Failure for keys that cannot be taken out.
void RequireKeys(
    std::string const& file, Dictionary const& settings, std::vector<std::string> const& keys) {
    std::string faults;
    for (std::string const& key : keys) {
        if (key == pdfsettings::kTailKey || Find(settings, key) == nullptr) {
            faults += fmt::format(
                "{}{}: {}",
                faults.empty() ? "" : "\n",
                InputName(file),
                MissingKeyText(settings, key));
        }
    }
    if (!faults.empty()) {
        throw Failure(Status::kNo, faults);
    }
}

std::string Remove(std::string text, std::vector<std::string> const& keys) {
    for (std::string const& key : keys) {
        auto changed = Without(pdfsettings::Document(text), key);
        if (changed) {
            text = std::move(*changed);
        }
    }
    return text;
}

// Takes keys out of a file, all of them or, if one is missing or the schema refuses the rest, none.
class UnsetCommand final : public Command {
public:
    UnsetCommand(CLI::App& program, Options& options)
        : Command(program, options, "unset", "Take settings out of a file") {
        AddFile(Parser(), options, fFile);
        AddArgument(Parser(), "KEY", fKeys, "Keys, as for get")->required();
        AddChangeOptions(Parser(), options);
        Parser().footer(
            "Examples:\n"
            "  joboptions unset office.joboptions ColorImageDict\n"
            "  joboptions unset -n office.joboptions ColorImageDict/QFactor NeverEmbed");
    }

    // Status::kDone, Status::kNo when there is no such key, or Status::kRefused with all faults
    // when the schema does not allow the result.
    Status Run() const override {
        return EditSettings(
            fFile, fOptions, [this](Editing const& editing) { return Unset(editing); });
    }

private:
    Status Unset(Editing const& editing) const {
        auto const& [component, schema, file, text, save] = editing;
        auto const settings = ParseSettings(component, file, text, schema.Text());
        Dictionary const before = settings.Values();
        RequireKeys(file, before, fKeys);
        std::string const changed = Remove(text, fKeys);
        Dictionary after = before;
        for (std::string const& key : fKeys) {
            RemoveAt(after, key);
        }
        RequireSettings(
            component,
            file,
            changed,
            after,
            "no dictionary may be left empty: unset the whole of it");
        auto findings = ParseSettings(component, file, changed, schema.Text()).Validate();
        MarkOldFindings(settings, findings);
        return Finish({file, save, before, after, findings, {}, changed}, fOptions);
    }

    std::string fFile;
    std::vector<std::string> fKeys;
};

} // namespace

std::unique_ptr<Command> MakeUnsetCommand(CLI::App& program, Options& options) {
    return std::make_unique<UnsetCommand>(program, options);
}

} // namespace joboptions
