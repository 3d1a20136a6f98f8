#include "format/SettingPath.h"

#include <algorithm>
#include <charconv>

namespace format {

std::string_view FirstPart(std::string_view path) noexcept {
    return path.substr(0, std::min(path.find('/', 1), path.size()));
}

std::string_view LastPart(std::string_view path) noexcept {
    std::size_t const parent = ParentPath(path).size();
    return parent == 0 ? path : path.substr(parent + 1);
}

std::string_view ParentPath(std::string_view path) noexcept {
    std::size_t parent = 0;
    for (std::size_t end = FirstPart(path).size(); end < path.size();) {
        parent = end;
        end += 1 + FirstPart(path.substr(end + 1)).size();
    }
    return path.substr(0, parent);
}

std::string RulePath(std::string_view path) {
    std::string_view part = FirstPart(path);
    std::string rule(part);
    while (part.size() < path.size()) {
        path.remove_prefix(part.size() + 1);
        part = FirstPart(path);
        rule += "/";
        rule += PositionIn(part) ? "*" : part;
    }
    return rule;
}

std::optional<std::size_t> PositionIn(std::string_view part) noexcept {
    std::size_t position = 0;
    char const* const end = part.data() + part.size();
    auto const [stop, error] = std::from_chars(part.data(), end, position);
    return error == std::errc() && stop == end ? std::optional(position) : std::nullopt;
}

} // namespace format
