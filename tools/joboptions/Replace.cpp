#include "tools/joboptions/Replace.h"

#include "tools/joboptions/Failure.h"
#include "tools/joboptions/Utf8.h"

#include <fmt/format.h>

namespace joboptions {

void Replace(
    std::string const& file,
    pdfsettings::Settings const& settings,
    std::string const& text,
    Options const& options) {
    bool const isInPlace = options.output.empty() || options.output == file;
    if (isInPlace && file != "-" && !options.force && settings.IsDirty()) {
        throw Failure(
            Status::kRefused,
            fmt::format("{}: changed on disk since it was read; use --force", VisibleText(file)));
    }
    WriteFile(options.output.empty() ? file : options.output, text);
}

} // namespace joboptions
