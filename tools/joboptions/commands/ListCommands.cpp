// joboptions list, folder: which settings there are and where they lie.
#include "tools/joboptions/commands/Command.h"

#include "pdfsettings/AdminPreferences.h"
#include "pdfsettings/Component.h"
#include "tools/joboptions/commands/Files.h"
#include "tools/joboptions/commands/ListEntries.h"
#include "tools/joboptions/json/ValueJson.h"
#include "tools/joboptions/text/Utf8.h"

#include <CLI/CLI.hpp>
#include <ctime>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace joboptions {

namespace {

using Breakdown = std::tm* (*)(std::time_t const*, std::tm*);

// A time by local or by UTC clock; empty for one beyond all calendars.
std::string TimeText(std::chrono::sys_seconds time, Breakdown breakDown, char const* format) {
    std::time_t const seconds = time.time_since_epoch().count();
    std::tm parts{};
    char text[64] = "";
    if (breakDown(&seconds, &parts) != nullptr) {
        text[std::strftime(text, sizeof text, format, &parts)] = '\0';
    }
    return text;
}

std::string LocalTime(ListEntry const& entry) {
    return TimeText(entry.settings.modified, &localtime_r, "%Y-%m-%d %H:%M");
}

std::string Join(std::vector<std::string> const& texts, char const* between) {
    return VisibleText(fmt::format("{}", fmt::join(texts, between)));
}

// Nothing for an empty text.
std::string Line(char const* label, std::string const& text) {
    return text.empty() ? "" : fmt::format("  {:<10}{}\n", label, text);
}

// The applications that the settings are hidden from, or are shown in all the same.
std::string Applications(ListEntry const& entry, bool isShown) {
    std::vector<std::string> names;
    for (auto const& [name, isShownIn] : entry.settings.isShownIn) {
        if (isShownIn == isShown) {
            names.push_back(name);
        }
    }
    return Join(names, ", ");
}

// The name to show; a file without one by its path.
std::string Title(ListEntry const& entry) {
    std::string const& name = entry.settings.name;
    return VisibleText(name.empty() ? entry.settings.path : name);
}

std::string Paragraph(ListEntry const& entry) {
    return Title(entry) + "\n" + Line("File", VisibleText(entry.settings.path)) +
           Line("Folder", entry.isUsers ? "the user's" : "the administrator's") +
           Line("Modified", LocalTime(entry)) +
           Line("Read-only", Join(entry.readOnlyReasons, "; ")) +
           Line("Hidden in", Applications(entry, /*isShown=*/false)) +
           Line("Shown in", Applications(entry, /*isShown=*/true)) +
           Line("Shadows", Join(entry.shadowed, ", "));
}

// A line for each: its name, whether it is read-only and hidden, and when it changed last, by the
// clock of this place.
std::string ListLines(std::vector<ListEntry> const& entries) {
    std::size_t width = 0;
    for (ListEntry const& entry : entries) {
        width = Widened(width, Title(entry));
    }
    std::string lines;
    for (ListEntry const& entry : entries) {
        lines += fmt::format(
            "{}  {:<9}  {:<6}  {}\n",
            Padded(Title(entry), width),
            entry.settings.isReadOnly ? "read-only" : "",
            entry.isHidden ? "hidden" : "",
            LocalTime(entry));
    }
    return lines;
}

// A paragraph for each, with all that is known.
std::string ListParagraphs(std::vector<ListEntry> const& entries) {
    std::string text;
    for (ListEntry const& entry : entries) {
        text += (text.empty() ? "" : "\n") + Paragraph(entry);
    }
    return text;
}

// {"version", "settings": [{"name", "path", "folder", "readOnly", "reasons", "modified", "hidden",
// "showHide", "shadows"}]}; times in UTC.
std::string ListDocument(std::vector<ListEntry> const& entries) {
    nlohmann::ordered_json document{{"version", 1}, {"settings", nlohmann::ordered_json::array()}};
    for (ListEntry const& entry : entries) {
        // Added without a search among those before: their names differ.
        nlohmann::ordered_json::object_t applications;
        for (auto const& [name, isShown] : entry.settings.isShownIn) {
            applications.emplace_back(name, isShown);
        }
        document["settings"].push_back(
            {{"name", entry.settings.name},
             {"path", entry.settings.path},
             {"folder", entry.isUsers ? "user" : "administrator"},
             {"readOnly", entry.settings.isReadOnly},
             {"reasons", entry.readOnlyReasons},
             {"modified", TimeText(entry.settings.modified, &gmtime_r, "%Y-%m-%dT%H:%M:%SZ")},
             {"hidden", entry.isHidden},
             {"showHide", std::move(applications)},
             {"shadows", entry.shadowed}});
    }
    return JsonText(document);
}

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
        // {"version", "folder": the path}.
        nlohmann::ordered_json const document{{"version", 1}, {"folder", folder}};
        WriteResult(fOptions, fOptions.json ? JsonText(document) : VisibleText(folder) + "\n");
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
