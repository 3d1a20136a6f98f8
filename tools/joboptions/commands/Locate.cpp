#include "tools/joboptions/commands/Locate.h"

#include "tools/joboptions/commands/Failure.h"
#include "tools/joboptions/commands/ListEntries.h"
#include "tools/joboptions/text/Utf8.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <system_error>

namespace joboptions {

namespace {

ListEntry FindEntry(
    pdfsettings::Component const& component, std::string const& name, Options const& options) {
    auto const entries = ReadEntries(component, options.application);
    auto const found = std::ranges::find_if(
        entries, [&name](ListEntry const& entry) { return entry.settings.name == name; });
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

} // namespace

std::string
Locate(pdfsettings::Component const& component, std::string const& file, Options const& options) {
    return IsListedName(file, options) ? FindEntry(component, file, options).settings.path : file;
}

std::string LocateForChange(
    pdfsettings::Component const& component, std::string const& file, Options const& options) {
    if (!IsListedName(file, options)) {
        return file;
    }
    ListEntry const entry = FindEntry(component, file, options);
    if (entry.settings.isReadOnly && options.output.empty()) {
        throw Failure(
            Status::kRefused,
            fmt::format(
                "{}: read-only: {}; copy it with -o [read-only]",
                VisibleText(file),
                fmt::join(entry.readOnlyReasons, "; ")));
    }
    return entry.settings.path;
}

std::string Locate(std::string const& file, Options const& options) {
    return IsListedName(file, options) ? Locate(pdfsettings::Component(), file, options) : file;
}

} // namespace joboptions
