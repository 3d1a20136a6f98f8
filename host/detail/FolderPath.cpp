#include "host/detail/FolderPath.h"

#include <filesystem>
#include <system_error>

namespace pdfsettings::detail {

std::string FolderPath(std::string const& folder) {
    std::error_code error;
    std::string path = folder.empty() ? folder : std::filesystem::absolute(folder, error).string();
    if (error) {
        path = folder;
    }
    while (path.size() > 1 && path.ends_with('/')) {
        path.pop_back();
    }
    return path;
}

} // namespace pdfsettings::detail
