// joboptions list, folder: which settings there are and where they lie.
#include "tools/joboptions/commands/Command.h"

#include "pdfsettings/AdminPreferences.h"
#include "pdfsettings/Component.h"
#include "tools/joboptions/commands/Options.h"
#include "tools/joboptions/commands/Replace.h"
#include "tools/joboptions/text/ListText.h"
#include "tools/joboptions/text/Utf8.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <memory>

namespace joboptions {

namespace {

// Such a list has no effect, and nothing else tells why.
void WarnOfUnusable(pdfsettings::AdminPreferences const& preferences, Options const& options) {
    if (preferences.IsUnusable()) {
        WriteWarning(
            VisibleText(preferences.File()) +
                ": cannot be read as a property list, and has no effect",
            options.quiet);
    }
}

// Writes the settings of both folders, without those that are hidden from the application.
class ListCommand final : public Command {
public:
    ListCommand(CLI::App& program, Options& options)
        : Command(
              program,
              options,
              "list",
              "List the settings of the administrator's and the user's folder") {
        AddApplication(Parser(), options, "Show what this application shows, under its names");
        Parser().add_flag(
            "--all", fIsAll, "List settings that are hidden from the application too");
        Parser().add_flag("--long", fIsLong, "Write all that is known of each");
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer("Examples:\n"
                        "  joboptions list\n"
                        "  joboptions list --app Webrix --all\n"
                        "  joboptions list --long --json");
    }

    // Status::kDone, also for an empty list.
    Status Run() const override {
        pdfsettings::Component const component;
        WarnOfUnusable(pdfsettings::AdminPreferences::Read(), fOptions);
        auto entries = ReadEntries(component, fOptions.application);
        if (!fIsAll) {
            std::erase_if(entries, [](ListEntry const& entry) { return entry.isHidden; });
        }
        if (fOptions.json) {
            WriteResult(fOptions, ListDocument(entries));
        } else {
            WriteResult(fOptions, fIsLong ? ListParagraphs(entries) : ListLines(entries));
        }
        return Status::kDone;
    }

private:
    bool fIsAll = false;
    bool fIsLong = false;
};

// Writes the path of the user's settings folder or of the administrator's.
class FolderCommand final : public Command {
public:
    FolderCommand(CLI::App& program, Options& options)
        : Command(program, options, "folder", "Write the path of the user's settings folder") {
        Parser().add_flag("--admin", fIsAdmins, "Write the path of the administrator's instead");
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer("Examples:\n"
                        "  cp office.joboptions \"$(joboptions folder)\"\n"
                        "  sudo mkdir -p \"$(joboptions folder --admin)\"");
    }

    // Status::kDone, or Status::kNo when there is no such folder.
    Status Run() const override {
        using pdfsettings::SettingsList;
        auto const preferences = pdfsettings::AdminPreferences::Read();
        WarnOfUnusable(preferences, fOptions);
        std::string const folder = fIsAdmins ? preferences.SettingsFolder()
                                             : SettingsList::UserFolder(pdfsettings::Component());
        if (folder.empty()) {
            WriteError("there is no settings folder", fOptions.quiet);
            return Status::kNo;
        }
        WriteResult(fOptions, fOptions.json ? FolderDocument(folder) : VisibleText(folder) + "\n");
        return Status::kDone;
    }

private:
    bool fIsAdmins = false;
};

} // namespace

std::unique_ptr<Command> MakeListCommand(CLI::App& program, Options& options) {
    return std::make_unique<ListCommand>(program, options);
}

std::unique_ptr<Command> MakeFolderCommand(CLI::App& program, Options& options) {
    return std::make_unique<FolderCommand>(program, options);
}

} // namespace joboptions
