// joboptions watch: report changes of sets as they happen.
#include "tools/joboptions/commands/Command.h"

#include "format/Tokens.h"
#include "pdfsettings/ChangeWatcher.h"
#include "pdfsettings/SettingsList.h"
#include "tools/joboptions/commands/ListCommands.h"
#include "tools/joboptions/text/Utf8.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <filesystem>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <poll.h>
#include <string>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace joboptions {

using pdfsettings::ChangeKind;
using pdfsettings::SettingsChange;

namespace {

char const* WordFor(ChangeKind kind) {
    switch (kind) {
    case ChangeKind::kAdded:
        return "added";
    case ChangeKind::kChanged:
        return "changed";
    case ChangeKind::kRemoved:
        return "removed";
    case ChangeKind::kHidden:
        return "hidden";
    case ChangeKind::kShown:
        return "shown";
    case ChangeKind::kReadOnly:
        return "read-only";
    case ChangeKind::kWritable:
        return "writable";
    case ChangeKind::kLookAgain:
        break;
    }
    return "look-again";
}

// {"version", "change", "file", "name"} on one line; file and name are null for look-again.
std::string JsonLine(SettingsChange const& change) {
    nlohmann::ordered_json line{{"version", 1}, {"change", WordFor(change.kind)}};
    bool const isOfFile = !change.file.empty();
    line["file"] =
        isOfFile ? nlohmann::ordered_json(WellFormedText(change.file.string())) : nullptr;
    line["name"] = isOfFile ? nlohmann::ordered_json(WellFormedText(change.name)) : nullptr;
    return JsonEscapes(line.dump()) + "\n";
}

std::string TextLine(SettingsChange const& change) {
    return change.file.empty()
               ? "look-again  changes were lost: read everything again\n"
               : fmt::format(
                     "{:<10}  {}\n", WordFor(change.kind), VisibleText(change.file.string()));
}

// Waits for changes. Returns false when standard output is no longer read.
bool Wait(pdfsettings::ChangeWatcher const& watcher) {
    pollfd descriptors[] = {{watcher.Descriptor(), POLLIN, 0}, {STDOUT_FILENO, 0, 0}};
    while (poll(descriptors, std::size(descriptors), -1) < 0) {
        if (errno != EINTR) {
            throw Failure(Status::kBadInput, std::generic_category().message(errno));
        }
    }
    return (descriptors[1].revents & (POLLERR | POLLHUP | POLLNVAL)) == 0;
}

// A path that does not exist yet is a file if its name says so.
bool IsFolder(std::filesystem::path const& path) {
    std::error_code error;
    return std::filesystem::is_directory(path, error) ||
           (!std::filesystem::exists(path, error) && path.extension() != format::kExtension);
}

// Reports what changes in files and folders, or in the list, until it is stopped.
class WatchCommand final : public Command {
public:
    WatchCommand(CLI::App& program, Options& options)
        : Command(program, options, "watch", "Report changes as they happen, until stopped") {
        AddArgument(
            Parser(),
            "PATH",
            fPaths,
            "Settings files and folders, which may be made later; default: all that list shows");
        AddApplication(
            Parser(), options, "Report what this application shows and hides, as list does");
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer(
            "Each line is a change: added, changed, removed, hidden, shown, read-only, "
            "writable; or look-again, when the system lost some.\n"
            "\n"
            "Examples:\n"
            "  joboptions watch\n"
            "  joboptions watch --app Webrix --json\n"
            "  joboptions watch presets/ | while read -r change file; do echo \"$file\"; "
            "done");
    }

    // Status::kDone when the output is no longer read.
    Status Run() const override {
        if (!fOptions.output.empty()) {
            throw Failure(Status::kWrongCall, "watch writes to standard output only");
        }
        pdfsettings::ChangeWatcher watcher;
        AddAll(watcher);
        WriteNote("watching for changes", fOptions.quiet);
        while (Wait(watcher)) {
            WriteChanges(watcher.Read());
        }
        return Status::kDone;
    }

private:
    void AddAll(pdfsettings::ChangeWatcher& watcher) const {
        for (std::string const& argument : fPaths) {
            if (argument.empty() || argument == "-") {
                Fail(Status::kWrongCall, argument, "only files and folders can be watched");
            }
            std::filesystem::path const path = Locate(argument, fOptions);
            IsFolder(path) ? watcher.AddFolder(path) : watcher.Add(path);
            WarnOfMissed(path);
        }
        if (fPaths.empty()) {
            watcher.AddListed(fOptions.application.value_or(""));
            WarnOfMissed(pdfsettings::UserFolder());
            WarnOfMissed(pdfsettings::AdministratorFolder());
        }
    }

    void WarnOfMissed(std::filesystem::path const& path) const {
        if (!path.empty() && pdfsettings::MayMissChanges(path)) {
            WriteWarning(
                VisibleText(path.string()) +
                    ": its file system does not report the changes that others make",
                fOptions.quiet);
        }
    }

    void WriteChanges(pdfsettings::Sequence<SettingsChange> const& changes) const {
        std::string lines;
        for (SettingsChange const& change : changes) {
            lines += fOptions.json ? JsonLine(change) : TextLine(change);
        }
        WriteOutput(lines);
    }

    std::vector<std::string> fPaths;
};

} // namespace

MakeCommand* const kMakeWatchCommand = &Make<WatchCommand>;

} // namespace joboptions
