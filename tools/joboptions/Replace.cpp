#include "tools/joboptions/Replace.h"

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
    WriteFile(options.output.empty() ? file : options.output, text);
}

} // namespace joboptions
