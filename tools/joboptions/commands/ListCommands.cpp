#include "tools/joboptions/commands/ListCommands.h"

#include "pdfsettings/AdminPreferences.h"
#include "pdfsettings/Component.h"
#include "tools/joboptions/commands/Result.h"
#include "tools/joboptions/text/ListText.h"
#include "tools/joboptions/text/Utf8.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace joboptions {

namespace {

// Such a list has no effect, and nothing else tells why.
void WarnOfUnusable(pdfsettings::AdminPreferences const& preferences, Options const& options) {
    if (preferences.IsUnusable() && !options.quiet) {
        WriteWarning(fmt::format(
            "{}: cannot be read as a property list, and has no effect",
            VisibleText(preferences.File())));
    }
}

} // namespace

ListCommand::ListCommand(CLI::App& program, Options& options)
    : Command(program, "list", "List the settings of the administrator's and the user's folder"),
      fOptions(options) {
    AddApplication(Parser(), options, "Show what this application shows, under its names");
    Parser().add_flag("--all", fIsAll, "List settings that are hidden from the application too");
    Parser().add_flag("--long", fIsLong, "Write all that is known of each");
    AddJson(Parser(), options);
    AddOptions(Parser(), options);
    Parser().footer("Examples:\n"
                    "  joboptions list\n"
                    "  joboptions list --app Webrix --all\n"
                    "  joboptions list --long --json");
}

Status ListCommand::Run() const {
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

FolderCommand::FolderCommand(CLI::App& program, Options& options)
    : Command(program, "folder", "Write the path of the user's settings folder"),
      fOptions(options) {
    Parser().add_flag("--admin", fIsAdmins, "Write the path of the administrator's instead");
    AddJson(Parser(), options);
    AddOptions(Parser(), options);
    Parser().footer("Examples:\n"
                    "  cp office.joboptions \"$(joboptions folder)\"\n"
                    "  sudo mkdir -p \"$(joboptions folder --admin)\"");
}

Status FolderCommand::Run() const {
    using pdfsettings::SettingsList;
    auto const preferences = pdfsettings::AdminPreferences::Read();
    WarnOfUnusable(preferences, fOptions);
    std::string const folder = fIsAdmins ? preferences.SettingsFolder()
                                         : SettingsList::UserFolder(pdfsettings::Component());
    if (folder.empty()) {
        if (!fOptions.quiet) {
            WriteError("there is no settings folder");
        }
        return Status::kNo;
    }
    WriteResult(fOptions, fOptions.json ? FolderDocument(folder) : VisibleText(folder) + "\n");
    return Status::kDone;
}

} // namespace joboptions
