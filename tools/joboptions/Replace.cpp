#include "tools/joboptions/Replace.h"

#include "pdfsettings/SafeSave.h"
#include "tools/joboptions/Failure.h"
#include "tools/joboptions/Utf8.h"

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

} // namespace

void Replace(
    std::string const& file,
    pdfsettings::Settings const& settings,
    std::string const& text,
    Options const& options) {
    bool const isInPlace = options.output.empty() || AreSameFile(options.output, file);
    if (isInPlace && file != "-" && !options.force && settings.IsDirty()) {
        throw Failure(
            Status::kRefused,
            fmt::format("{}: changed on disk since it was read; use --force", VisibleText(file)));
    }
    WriteFile(TargetOf(file, options), text);
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
