#include "tools/joboptions/Replace.h"

#include "pdfsettings/SafeSave.h"
#include "tools/joboptions/Input.h"
#include "tools/joboptions/Result.h"
#include "tools/joboptions/Utf8.h"

#include <cerrno>
#include <filesystem>
#include <fmt/format.h>
#include <system_error>

namespace joboptions {

namespace {

// Whatever the spelling, and through links.
bool AreSameFile(std::string const& a, std::string const& b) {
    std::error_code error;
    return a == b || std::filesystem::equivalent(a, b, error);
}

std::string const& TargetOf(std::string const& file, Options const& options) {
    return options.output.empty() ? file : options.output;
}

// What is no file cannot be replaced, nor be locked.
bool IsInPlace(std::string const& file, Options const& options) {
    std::error_code error;
    return (options.output.empty() || AreSameFile(options.output, file)) &&
           std::filesystem::is_regular_file(file, error);
}

Status EditFile(std::string const& file, Options const& options, ChangeText const& change) {
    Status status = Status::kDone;
    bool isRead = false;
    auto const edit = [&](pdfsettings::EditedFile& edited) {
        if (!edited.Bytes()) {
            throw pdfsettings::Error(std::generic_category().message(ENOENT));
        }
        isRead = true;
        // A copy: saving changes the bytes.
        status = change(std::string(*edited.Bytes()), [&](std::string const& text) {
            WriteBy(file, options, [&] { return edited.Save(text); });
        });
    };
    try {
        Edit(file, edit, SaveOptionsOf(options));
    } catch (pdfsettings::Error const& error) {
        if (isRead) {
            throw;
        }
        bool const isRefused = dynamic_cast<pdfsettings::RefusedError const*>(&error) != nullptr;
        throw Failure(
            isRefused ? Status::kRefused : Status::kBadInput,
            fmt::format("{}: {}", InputName(file), error.what()));
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
    if (target != "-" && pdfsettings::IsReadOnly(target)) {
        throw Failure(Status::kRefused, VisibleText(target) + ": read-only");
    }
}

void RequireRoom(std::string const& file, Options const& options) {
    if (options.json && !options.dryRun && TargetOf(file, options) == "-") {
        throw Failure(Status::kWrongCall, "standard output cannot take both JSON and the settings");
    }
}

} // namespace joboptions
