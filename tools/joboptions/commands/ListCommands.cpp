// joboptions list, folder: which settings there are and where they lie; and finding one by its
// name.
#include "tools/joboptions/commands/ListCommands.h"

#include "format/Tokens.h"
#include "pdfsettings/AdminPreferences.h"
#include "pdfsettings/SettingsList.h"
#include "tools/joboptions/commands/Command.h"
#include "tools/joboptions/commands/Files.h"
#include "tools/joboptions/json/ValueJson.h"
#include "tools/joboptions/text/Utf8.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <sys/stat.h>
#include <system_error>
#include <unordered_map>
#include <utility>
#include <vector>

namespace joboptions {

using pdfsettings::ListedSettings;
using pdfsettings::SettingsList;

namespace {

// Settings that are listed, and what the command line tells of them.
struct ListEntry {
    pdfsettings::ListedSettings fSettings;
    bool fIsUsers;                             // in the user's folder, not in the administrator's
    bool fIsHidden;                            // from the application that was asked for
    std::vector<std::string> fReadOnlyReasons; // all of them
    std::vector<std::string> fShadowed;        // the files that are not listed because of it
};

// The name under which a file would be shown without a display name.
std::string OwnName(std::filesystem::path const& path) {
    std::string const name = path.filename().string();
    bool const hasExtension =
        name.size() > format::kExtension.size() && name.ends_with(format::kExtension);
    return hasExtension ? name.substr(0, name.size() - format::kExtension.size()) : name;
}

// Whether its owner may write a file, and whether nobody may.
struct Rights {
    bool fMayOwnerWrite = true;
    bool fIsLocked = false;
};

Rights RightsOf(std::string const& path) {
    struct statx status {};
    if (statx(AT_FDCWD, path.c_str(), 0, STATX_MODE, &status) != 0) {
        return {};
    }
    return {(status.stx_mode & S_IWUSR) != 0, (status.stx_attributes & STATX_ATTR_IMMUTABLE) != 0};
}

std::vector<std::string> ReasonsFor(ListedSettings const& settings, bool isUsers) {
    std::vector<std::string> reasons;
    if (!settings.isReadOnly) {
        return reasons;
    }
    Rights const rights = RightsOf(settings.path);
    if (!isUsers) {
        reasons.emplace_back("it lies in the administrator's folder");
    }
    // A display name may be the file's own name: then there is no other reason.
    bool const hasOther = !isUsers || !rights.fMayOwnerWrite || rights.fIsLocked;
    if (settings.name != OwnName(settings.path) || !hasOther) {
        reasons.emplace_back("it is shown under a display name");
    }
    if (!rights.fMayOwnerWrite) {
        reasons.emplace_back("its owner may not write it");
    }
    if (rights.fIsLocked) {
        reasons.emplace_back("it is locked");
    }
    return reasons;
}

ListEntry MakeEntry(
    ListedSettings settings,
    std::filesystem::path const& adminFolder,
    std::optional<std::string> const& application) {
    auto const folder = std::filesystem::path(settings.path).parent_path();
    std::error_code error;
    bool const isUsers = !std::filesystem::equivalent(folder, adminFolder, error);
    bool const isHidden = application && settings.IsHiddenFrom(*application);
    auto reasons = ReasonsFor(settings, isUsers);
    return {std::move(settings), isUsers, isHidden, std::move(reasons), {}};
}

// The paths of a folder that could be listed.
std::vector<std::filesystem::path> SettingsIn(std::string const& folder) {
    std::vector<std::filesystem::path> paths;
    std::error_code error;
    std::filesystem::directory_iterator file(folder, error);
    for (; !error && file != std::filesystem::directory_iterator(); file.increment(error)) {
        std::string const name = file->path().filename().string();
        std::size_t const dot = std::min(name.rfind('.'), name.size());
        if (name.substr(dot).starts_with(format::kExtension) && IsPlainText(name)) {
            paths.push_back(file->path().lexically_normal());
        }
    }
    std::ranges::sort(paths);
    return paths;
}

// Gives each entry the files of both folders that would be listed under its name and are not. A
// folder that cannot be read has none.
void AddShadowed(
    pdfsettings::AdminPreferences const& preferences,
    std::string const& userFolder,
    std::optional<std::string> const& application,
    std::vector<ListEntry>& entries) {
    std::unordered_map<std::string, ListEntry*> byName;
    std::set<std::filesystem::path> known;
    for (ListEntry& entry : entries) {
        byName.emplace(entry.fSettings.name, &entry);
        known.insert(std::filesystem::path(entry.fSettings.path).lexically_normal());
    }
    auto paths = SettingsIn(preferences.SettingsFolder());
    std::ranges::move(SettingsIn(userFolder), std::back_inserter(paths));
    auto const names =
        application ? preferences.DisplayNames(*application) : std::map<std::string, std::string>();
    for (auto const& path : paths) {
        auto const shown = names.find(OwnName(path));
        auto const found = byName.find(shown == names.end() ? OwnName(path) : shown->second);
        if (found != byName.end() && known.insert(path).second) {
            found->second->fShadowed.push_back(path.string());
        }
    }
}

// All of them by their names, for an application or for none.
std::vector<ListEntry> ReadEntries(
    pdfsettings::Component const& component, std::optional<std::string> const& application) {
    auto const preferences = pdfsettings::AdminPreferences::Read();
    std::vector<ListEntry> entries;
    for (ListedSettings& settings : SettingsList::Read(component, application)) {
        entries.push_back(
            MakeEntry(std::move(settings), preferences.SettingsFolder(), application));
    }
    std::ranges::sort(entries, {}, [](ListEntry const& entry) -> std::string const& {
        return entry.fSettings.name;
    });
    AddShadowed(preferences, SettingsList::UserFolder(component), application, entries);
    return entries;
}

ListEntry FindEntry(
    pdfsettings::Component const& component, std::string const& name, Options const& options) {
    auto const entries = ReadEntries(component, options.application);
    auto const found = std::ranges::find_if(
        entries, [&name](ListEntry const& entry) { return entry.fSettings.name == name; });
    if (found == entries.end()) {
        throw Failure(
            Status::kBadInput,
            fmt::format(
                "{}: no settings are listed under this name; see joboptions list --all --app {}",
                VisibleText(name),
                VisibleText(*options.application)));
    }
    return *found;
}

bool IsListedName(std::string const& file, Options const& options) {
    if (!options.application || file == "-") {
        return false;
    }
    // A listed name may have a slash; a path leads to a file.
    std::error_code error;
    return file.find('/') == std::string::npos || !std::filesystem::exists(file, error);
}

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
    return TimeText(entry.fSettings.modified, &localtime_r, "%Y-%m-%d %H:%M");
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
    for (auto const& [name, isShownIn] : entry.fSettings.isShownIn) {
        if (isShownIn == isShown) {
            names.push_back(name);
        }
    }
    return Join(names, ", ");
}

// The name to show; a file without one by its path.
std::string Title(ListEntry const& entry) {
    std::string const& name = entry.fSettings.name;
    return VisibleText(name.empty() ? entry.fSettings.path : name);
}

std::string Paragraph(ListEntry const& entry) {
    return Title(entry) + "\n" + Line("File", VisibleText(entry.fSettings.path)) +
           Line("Folder", entry.fIsUsers ? "the user's" : "the administrator's") +
           Line("Modified", LocalTime(entry)) +
           Line("Read-only", Join(entry.fReadOnlyReasons, "; ")) +
           Line("Hidden in", Applications(entry, /*isShown=*/false)) +
           Line("Shown in", Applications(entry, /*isShown=*/true)) +
           Line("Shadows", Join(entry.fShadowed, ", "));
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
            entry.fSettings.isReadOnly ? "read-only" : "",
            entry.fIsHidden ? "hidden" : "",
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
        for (auto const& [name, isShown] : entry.fSettings.isShownIn) {
            applications.emplace_back(name, isShown);
        }
        document["settings"].push_back(
            {{"name", entry.fSettings.name},
             {"path", entry.fSettings.path},
             {"folder", entry.fIsUsers ? "user" : "administrator"},
             {"readOnly", entry.fSettings.isReadOnly},
             {"reasons", entry.fReadOnlyReasons},
             {"modified", TimeText(entry.fSettings.modified, &gmtime_r, "%Y-%m-%dT%H:%M:%SZ")},
             {"hidden", entry.fIsHidden},
             {"showHide", std::move(applications)},
             {"shadows", entry.fShadowed}});
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
            std::erase_if(entries, [](ListEntry const& entry) { return entry.fIsHidden; });
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

std::string
Locate(pdfsettings::Component const& component, std::string const& file, Options const& options) {
    return IsListedName(file, options) ? FindEntry(component, file, options).fSettings.path : file;
}

std::string LocateForChange(
    pdfsettings::Component const& component, std::string const& file, Options const& options) {
    if (!IsListedName(file, options)) {
        return file;
    }
    ListEntry const entry = FindEntry(component, file, options);
    if (entry.fSettings.isReadOnly && options.output.empty()) {
        throw Failure(
            Status::kRefused,
            fmt::format(
                "{}: read-only: {}; copy it with -o [read-only]",
                VisibleText(file),
                fmt::join(entry.fReadOnlyReasons, "; ")));
    }
    return entry.fSettings.path;
}

std::string Locate(std::string const& file, Options const& options) {
    return IsListedName(file, options) ? Locate(pdfsettings::Component(), file, options) : file;
}

MakeCommand* const kMakeListCommand = &Make<ListCommand>;
MakeCommand* const kMakeFolderCommand = &Make<FolderCommand>;

} // namespace joboptions
