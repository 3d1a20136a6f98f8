#include "tools/joboptions/text/FindingIds.h"

#include <algorithm>
#include <regex>
#include <string_view>

namespace joboptions {

extern std::string_view const kFindingsTable;

namespace {

// The text up to an end, which is removed from text too.
std::string_view Take(std::string_view& text, std::string_view end) {
    std::string_view const taken = text.substr(0, text.find(end));
    text.remove_prefix(std::min(taken.size() + end.size(), text.size()));
    return taken;
}

// Without the marks of Markdown.
std::string PlainText(std::string_view cell) {
    static std::regex const kLink(R"(\[([^\]]*)\]\([^)]*\))");
    std::string text = std::regex_replace(std::string(cell), kLink, "$1");
    std::erase(text, '`');
    return text;
}

std::vector<FindingId> ReadTable() {
    std::vector<FindingId> ids;
    for (std::string_view rest = kFindingsTable; !rest.empty();) {
        std::string_view row = Take(rest, "\n");
        if (!row.starts_with("| `")) {
            continue;
        }
        row.remove_prefix(2);
        std::string_view names = Take(row, " | ");
        std::string const meaning = PlainText(Take(row, " |"));
        while (!names.empty()) {
            ids.push_back({PlainText(Take(names, ", ")), meaning});
        }
    }
    return ids;
}

} // namespace

std::vector<FindingId> const& FindingIds() {
    static std::vector<FindingId> const kIds = ReadTable();
    return kIds;
}

} // namespace joboptions
