#include "tools/joboptions/commands/Paths.h"

#include "format/Tokens.h"
#include "tools/joboptions/commands/Output.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace joboptions {

namespace {

namespace fs = std::filesystem;

// Adds the files of a folder, and the folders in it to those that are left.
void Visit(fs::path const& folder, std::vector<fs::path>& left, FoundFiles& found) {
    std::error_code error;
    fs::directory_iterator entries(folder, error);
    for (; !error && entries != fs::directory_iterator(); entries.increment(error)) {
        std::error_code ignored;
        if (fs::is_directory(entries->symlink_status(ignored))) {
            left.push_back(entries->path());
        } else if (
            entries->path().extension() == format::kExtension && !entries->is_directory(ignored)) {
            found.files.push_back(entries->path().string());
        }
    }
    if (error) {
        found.errors.push_back(InputName(folder.string()) + ": " + error.message());
    }
}

} // namespace

FoundFiles FindFiles(std::string const& path) {
    std::error_code error;
    if (path == "-" || !fs::is_directory(path, error)) {
        return {{path}, {}};
    }
    FoundFiles found;
    std::vector<fs::path> left{path};
    while (!left.empty()) {
        fs::path const folder = left.back();
        left.pop_back();
        Visit(folder, left, found);
    }
    std::ranges::sort(found.files);
    std::ranges::sort(found.errors);
    return found;
}

} // namespace joboptions
