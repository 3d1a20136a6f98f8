#include "tools/joboptions/commands/Replace.h"

#include "pdfsettings/SafeSave.h"
#include "tools/joboptions/commands/Input.h"
#include "tools/joboptions/commands/Result.h"
#include "tools/joboptions/text/Utf8.h"

#include <cerrno>
#include <fmt/format.h>
#include <system_error>

namespace joboptions {

namespace {

std::string const& TargetOf(std::string const& file, Options const& options) {
    return options.output.empty() ? file : options.output;
}

// Another spelling of the same file is another output, for what lies on the way there counts; it is
// compared with what stood there, which is all that is needed. What is no file cannot be locked.
bool IsInPlace(std::string const& file, Options const& options) {
    return (options.output.empty() || options.output == file) && file != "-" &&
           !pdfsettings::IsStream(file);
}

// The failure of a command for an error before it has read file.
Failure UnreadFailure(std::string const& file, pdfsettings::Error const& error) {
    bool const isRefused = dynamic_cast<pdfsettings::RefusedError const*>(&error) != nullptr;
    return {
        isRefused ? Status::kRefused : Status::kBadInput,
        fmt::format("{}: {}", InputName(file), VisibleText(error.what()))};
}

Status ChangeEdited(
    pdfsettings::EditedFile& edited,
    std::string const& file,
    Options const& options,
    ChangeText const& change) {
    // A copy: saving changes the bytes.
    std::string const text = *edited.Bytes();
    return change(text, [&](std::string const& changed) {
        WriteBy(file, options, [&] { return edited.Save(changed); });
    });
}

Status EditFile(std::string const& file, Options const& options, ChangeText const& change) {
    Status status = Status::kDone;
    bool isRead = false;
    auto const edit = [&](pdfsettings::EditedFile& edited) {
        isRead = edited.Bytes().has_value();
        if (!isRead) {
            throw pdfsettings::Error(std::generic_category().message(ENOENT));
        }
        status = ChangeEdited(edited, file, options, change);
    };
    try {
        Edit(file, edit, SaveOptionsOf(options));
    } catch (pdfsettings::Error const& error) {
        if (isRead) {
            throw;
        }
        throw UnreadFailure(file, error);
    }
    return status;
}

} // namespace

Status ChangeFile(std::string const& file, Options const& options, ChangeText const& change) {
    if (!options.dryRun && IsInPlace(file, options)) {
        return EditFile(file, options, change);
    }
    return change(ReadBytes(file), [&](std::string const& text) {
        WriteFile(TargetOf(file, options), text, options);
    });
}

void RequireReplaceable(std::string const& file, Options const& options) {
    std::string const& target = TargetOf(file, options);
    if (target == "-") {
        return;
    }
    try {
        pdfsettings::LookAt(target, SaveOptionsOf(options));
    } catch (pdfsettings::RefusedError const& error) {
        throw Failure(
            Status::kRefused,
            fmt::format("{}: {}", VisibleText(target), VisibleText(error.what())));
    } catch (pdfsettings::Error const&) {
        // A dry run writes nothing that could fail.
    }
    if (pdfsettings::IsReadOnly(target)) {
        throw Failure(Status::kRefused, VisibleText(target) + ": read-only");
    }
}

void RequireRoom(std::string const& file, Options const& options) {
    if (options.json && !options.dryRun && TargetOf(file, options) == "-") {
        throw Failure(Status::kWrongCall, "standard output cannot take both JSON and the settings");
    }
}

} // namespace joboptions
