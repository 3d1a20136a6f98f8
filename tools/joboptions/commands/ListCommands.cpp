// joboptions list and folder: the listed settings and their folders; and finding settings by name.
#include "tools/joboptions/commands/ListCommands.h"

#include "pdfsettings/Review.h"
#include "pdfsettings/SettingsList.h"
#include "tools/joboptions/commands/Command.h"
#include "tools/joboptions/commands/Files.h"
#include "tools/joboptions/commands/Trial.h"
#include "tools/joboptions/json/ValueJson.h"
#include "tools/joboptions/text/Utf8.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <ctime>
#include <filesystem>
#include <fmt/format.h>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <system_error>
#include <utility>
#include <vector>

namespace joboptions {

using pdfsettings::ListedSettings;
using pdfsettings::PreferencesProblem;

namespace {

// The settings listed for an application, or without one.
pdfsettings::Sequence<ListedSettings>
ReadList(std::optional<std::string> const& application, bool withHidden, bool withDetails) {
    return pdfsettings::List({application.value_or(""), withHidden, withDetails});
}

ListedSettings FindListed(std::string const& name, Options const& options) {
    auto const list = ReadList(options.application, /*withHidden=*/true, /*withDetails=*/true);
    auto const found = std::ranges::find(list, name, &ListedSettings::Name);
    if (found == list.end()) {
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
    // A listed name may have a slash. An existing path is a file.
    std::error_code error;
    return file.find('/') == std::string::npos || !std::filesystem::exists(file, error);
}

using Breakdown = std::tm* (*)(std::time_t const*, std::tm*);

// A time in local time or UTC; empty for one that the calendar cannot represent.
std::string TimeText(std::chrono::sys_seconds time, Breakdown breakDown, char const* format) {
    std::time_t const seconds = time.time_since_epoch().count();
    std::tm parts{};
    char text[64] = "";
    if (breakDown(&seconds, &parts) != nullptr) {
        text[std::strftime(text, sizeof text, format, &parts)] = '\0';
    }
    return text;
}

std::string LocalTime(ListedSettings const& settings) {
    return TimeText(settings.Modified(), &localtime_r, "%Y-%m-%d %H:%M");
}

std::string Join(std::span<std::string const> texts, char const* between) {
    return VisibleText(fmt::format("{}", fmt::join(texts, between)));
}

std::vector<std::string> ShadowedBy(ListedSettings const& settings) {
    std::vector<std::string> paths;
    for (auto const& path : settings.Shadowed()) {
        paths.push_back(path.string());
    }
    return paths;
}

// A labelled line; empty for an empty text.
std::string Line(char const* label, std::string const& text) {
    return text.empty() ? "" : fmt::format("  {:<10}{}\n", label, text);
}

// The applications that are named as showing the settings, or as hiding them.
std::string Applications(ListedSettings const& settings, bool isShown) {
    std::vector<std::string> names;
    for (pdfsettings::Visibility const& visibility : settings.Applications()) {
        if (visibility.isShown == isShown) {
            names.push_back(visibility.application);
        }
    }
    return Join(names, ", ");
}

// The name to show; the path for a file with an empty name.
std::string Title(ListedSettings const& settings) {
    std::string const& name = settings.Name();
    return VisibleText(name.empty() ? settings.Path().string() : name);
}

bool IsUsers(ListedSettings const& settings) {
    return settings.From() == pdfsettings::Origin::kUser;
}

std::string Paragraph(ListedSettings const& settings) {
    return Title(settings) + "\n" + Line("File", VisibleText(settings.Path().string())) +
           Line("Folder", IsUsers(settings) ? "the user's" : "the administrator's") +
           Line("Modified", LocalTime(settings)) +
           Line("Read-only", Join(settings.ReadOnlyReasons(), "; ")) +
           Line("Hidden in", Applications(settings, /*isShown=*/false)) +
           Line("Shown in", Applications(settings, /*isShown=*/true)) +
           Line("Shadows", Join(ShadowedBy(settings), ", "));
}

using Listed = pdfsettings::Sequence<ListedSettings>;

// A line for each file: its name, whether it is read-only and hidden, and its modification time in
// local time.
std::string ListLines(Listed const& list) {
    std::size_t width = 0;
    for (ListedSettings const& settings : list) {
        width = Widened(width, Title(settings));
    }
    std::string lines;
    for (ListedSettings const& settings : list) {
        lines += fmt::format(
            "{}  {:<9}  {:<6}  {}\n",
            Padded(Title(settings), width),
            settings.IsReadOnly() ? "read-only" : "",
            settings.IsHidden() ? "hidden" : "",
            LocalTime(settings));
    }
    return lines;
}

// A paragraph for each file with all details.
std::string ListParagraphs(Listed const& list) {
    std::string text;
    for (ListedSettings const& settings : list) {
        text += (text.empty() ? "" : "\n") + Paragraph(settings);
    }
    return text;
}

// {"version", "settings": [{"name", "path", "folder", "readOnly", "reasons", "modified", "hidden",
// "showHide", "shadows"}]}; times in UTC.
std::string ListDocument(Listed const& list) {
    nlohmann::ordered_json document{{"version", 1}, {"settings", nlohmann::ordered_json::array()}};
    for (ListedSettings const& settings : list) {
        // Added without searching the keys before: all names differ.
        nlohmann::ordered_json::object_t applications;
        for (pdfsettings::Visibility const& visibility : settings.Applications()) {
            applications.emplace_back(visibility.application, visibility.isShown);
        }
        auto const reasons = settings.ReadOnlyReasons();
        document["settings"].push_back(
            {{"name", settings.Name()},
             {"path", settings.Path().string()},
             {"folder", IsUsers(settings) ? "user" : "administrator"},
             {"readOnly", settings.IsReadOnly()},
             {"reasons", std::vector<std::string>(reasons.begin(), reasons.end())},
             {"modified", TimeText(settings.Modified(), &gmtime_r, "%Y-%m-%dT%H:%M:%SZ")},
             {"hidden", settings.IsHidden()},
             {"showHide", std::move(applications)},
             {"shadows", ShadowedBy(settings)}});
    }
    return JsonText(document);
}

// Unusable preferences have no effect, and nothing else reports them.
void WarnOfUnusable(Options const& options) {
    std::string const file = pdfsettings::UnusablePreferences().string();
    if (!file.empty()) {
        WriteWarning(
            VisibleText(file) + ": cannot be read as a property list, and has no effect",
            options.quiet);
    }
}

bool IsError(pdfsettings::Finding const& finding) {
    return finding.Level() == pdfsettings::Severity::kError;
}

// What is wrong with a file.
std::vector<PreferencesProblem> ErrorsIn(std::filesystem::path const& file) {
    std::vector<PreferencesProblem> errors;
    try {
        auto const all = Review(pdfsettings::OpenDocument(file.native()));
        std::vector<pdfsettings::Finding> found;
        std::ranges::copy_if(all, std::back_inserter(found), &IsError);
        for (pdfsettings::Finding const& finding : found) {
            errors.push_back({file, finding.Path(), finding.Message()});
        }
    } catch (pdfsettings::Error const& error) {
        errors.push_back({file, "", error.Message()});
    }
    return errors;
}

// What is wrong with the preferences, the folders and the files in them.
std::vector<PreferencesProblem> FindProblems() {
    auto const found = pdfsettings::CheckPreferences();
    std::vector<PreferencesProblem> problems(found.begin(), found.end());
    for (ListedSettings const& settings : pdfsettings::List({.withHidden = true})) {
        std::ranges::move(ErrorsIn(settings.Path()), std::back_inserter(problems));
    }
    return problems;
}

// A line for each problem, or {"version", "problems": [{"file", "key", "message"}]}; a missing key
// is null.
std::string ProblemsText(Options const& options, bool* hasProblems) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    std::string lines;
    for (auto const& [file, key, message] : FindProblems()) {
        lines += fmt::format(
            "{}: {}{}{}\n",
            VisibleText(file.string()),
            VisibleText(key),
            key.empty() ? "" : ": ",
            VisibleText(message));
        list.push_back(
            {{"file", WellFormedText(file.string())},
             {"key",
              key.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(WellFormedText(key))},
             {"message", WellFormedText(message)}});
    }
    *hasProblems = !list.empty();
    return options.json ? JsonText({{"version", 1}, {"problems", std::move(list)}}) : lines;
}

// Lists the settings of both folders, without those that the application hides.
class ListCommand final : public Command {
public:
    ListCommand(CLI::App& program, Options& options)
        : Command(
              program,
              options,
              "list",
              "List the settings files of the administrator and the user") {
        AddApplication(
            Parser(), options, "List what this application shows, under its display names");
        Parser().add_flag("--all", fIsAll, "Include files that are hidden from the application");
        Parser().add_flag(
            "--long", fIsLong, "Print details: path, folder, permissions, applications");
        Parser().add_flag(
            "--check", fIsCheck, "Report problems of property lists, folders and files instead");
        AddTrial("--admin-folder", fAdminFolder, "the administrator's, with its property list");
        AddTrial("--user-folder", fUserFolder, "the user's");
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer("Examples:\n"
                        "  joboptions list\n"
                        "  joboptions list --app Webrix --all\n"
                        "  joboptions list --long --json\n"
                        "  joboptions list --check\n"
                        "  joboptions list --check --admin-folder new/ --user-folder trial/");
    }

    // Status::kDone, also for an empty list; with --check Status::kNo if there are problems.
    Status Run() const override {
        bool const isTrial = !fAdminFolder.empty() || !fUserFolder.empty();
        if (isTrial && !fOptions.output.empty()) {
            // The file could be made in what this call alone sees.
            throw Failure(Status::kWrongCall, "a trial writes to standard output only");
        }
        ShowFolders(fAdminFolder, fUserFolder);
        if (fIsCheck) {
            bool hasProblems = false;
            WriteResult(fOptions, ProblemsText(fOptions, &hasProblems));
            return hasProblems ? Status::kNo : Status::kDone;
        }
        WarnOfUnusable(fOptions);
        auto const list = ReadList(fOptions.application, fIsAll, fIsLong || fOptions.json);
        if (fOptions.json) {
            WriteResult(fOptions, ListDocument(list));
        } else {
            WriteResult(fOptions, fIsLong ? ListParagraphs(list) : ListLines(list));
        }
        return Status::kDone;
    }

private:
    void AddTrial(char const* name, std::string& folder, std::string const& whose) {
        Parser()
            .add_option(name, folder, "Try a folder, in this call only, as if it were " + whose)
            ->type_name("FOLDER")
            ->check(NotEmpty());
    }

    bool fIsAll = false;
    bool fIsLong = false;
    bool fIsCheck = false;
    std::string fAdminFolder;
    std::string fUserFolder;
};

// Writes the path of the user's or the administrator's settings folder.
class FolderCommand final : public Command {
public:
    FolderCommand(CLI::App& program, Options& options)
        : Command(program, options, "folder", "Print the path of the user's settings folder") {
        Parser().add_flag(
            "--admin", fIsAdmins, "Print the path of the administrator's folder instead");
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer("Examples:\n"
                        "  cp office.joboptions \"$(joboptions folder)\"\n"
                        "  sudo mkdir -p \"$(joboptions folder --admin)\"");
    }

    // Status::kDone, or Status::kNo if there is no such folder.
    Status Run() const override {
        WarnOfUnusable(fOptions);
        std::string const folder = fIsAdmins ? pdfsettings::AdministratorFolder().string()
                                             : pdfsettings::UserFolder().string();
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

std::string Locate(std::string const& file, Options const& options) {
    return IsListedName(file, options) ? FindListed(file, options).Path().string() : file;
}

std::string LocateForChange(std::string const& file, Options const& options) {
    if (!IsListedName(file, options)) {
        return file;
    }
    ListedSettings const settings = FindListed(file, options);
    if (settings.IsReadOnly() && options.output.empty()) {
        throw Failure(
            Status::kRefused,
            fmt::format(
                "{}: read-only: {}; copy it with -o [read-only]",
                VisibleText(file),
                fmt::join(settings.ReadOnlyReasons(), "; ")));
    }
    return settings.Path().string();
}

MakeCommand* const kMakeListCommand = &Make<ListCommand>;
MakeCommand* const kMakeFolderCommand = &Make<FolderCommand>;

} // namespace joboptions
