#include "tools/joboptions/text/ListText.h"

#include "tools/joboptions/json/ValueJson.h"
#include "tools/joboptions/text/Utf8.h"

#include <algorithm>
#include <ctime>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace joboptions {

namespace {

// Longer names do not push the columns of all others to the right.
constexpr std::size_t kWidestName = 40;

using Breakdown = std::tm* (*)(std::time_t const*, std::tm*);

// A time by local or by UTC clock; empty for one beyond all calendars.
std::string TimeText(std::chrono::sys_seconds time, Breakdown breakDown, char const* format) {
    std::time_t const seconds = time.time_since_epoch().count();
    std::tm parts{};
    char text[64] = "";
    if (breakDown(&seconds, &parts) != nullptr) {
        text[std::strftime(text, sizeof text, format, &parts)] = '\0';
    }
    return text;
}

std::string LocalTime(ListEntry const& entry) {
    return TimeText(entry.settings.modified, &localtime_r, "%Y-%m-%d %H:%M");
}

std::string Padded(std::string const& visible, std::size_t width) {
    std::size_t const own = DisplayWidth(visible);
    return visible + std::string(own < width ? width - own : 0, ' ');
}

std::string Join(std::vector<std::string> const& texts, char const* between) {
    return VisibleText(fmt::format("{}", fmt::join(texts, between)));
}

// Nothing for an empty text.
std::string Line(char const* label, std::string const& text) {
    return text.empty() ? "" : fmt::format("  {:<10}{}\n", label, text);
}

// The applications that the settings are hidden from, or are shown in all the same.
std::string Applications(ListEntry const& entry, bool isShown) {
    std::vector<std::string> names;
    for (auto const& [name, isShownIn] : entry.settings.isShownIn) {
        if (isShownIn == isShown) {
            names.push_back(name);
        }
    }
    return Join(names, ", ");
}

// The name to show; a file without one by its path.
std::string Title(ListEntry const& entry) {
    std::string const& name = entry.settings.name;
    return VisibleText(name.empty() ? entry.settings.path : name);
}

std::string Paragraph(ListEntry const& entry) {
    return Title(entry) + "\n" + Line("File", VisibleText(entry.settings.path)) +
           Line("Folder", entry.isUsers ? "the user's" : "the administrator's") +
           Line("Modified", LocalTime(entry)) +
           Line("Read-only", Join(entry.readOnlyReasons, "; ")) +
           Line("Hidden in", Applications(entry, /*isShown=*/false)) +
           Line("Shown in", Applications(entry, /*isShown=*/true)) +
           Line("Shadows", Join(entry.shadowed, ", "));
}

} // namespace

std::string ListLines(std::vector<ListEntry> const& entries) {
    std::size_t width = 0;
    for (ListEntry const& entry : entries) {
        width = std::max(width, DisplayWidth(Title(entry)));
    }
    width = std::min(width, kWidestName);
    std::string lines;
    for (ListEntry const& entry : entries) {
        lines += fmt::format(
            "{}  {:<9}  {:<6}  {}\n",
            Padded(Title(entry), width),
            entry.settings.isReadOnly ? "read-only" : "",
            entry.isHidden ? "hidden" : "",
            LocalTime(entry));
    }
    return lines;
}

std::string ListParagraphs(std::vector<ListEntry> const& entries) {
    std::string text;
    for (ListEntry const& entry : entries) {
        text += (text.empty() ? "" : "\n") + Paragraph(entry);
    }
    return text;
}

std::string ListDocument(std::vector<ListEntry> const& entries) {
    nlohmann::ordered_json document{{"version", 1}, {"settings", nlohmann::ordered_json::array()}};
    for (ListEntry const& entry : entries) {
        // Added without a search among those before: their names differ.
        nlohmann::ordered_json::object_t applications;
        for (auto const& [name, isShown] : entry.settings.isShownIn) {
            applications.emplace_back(name, isShown);
        }
        document["settings"].push_back(
            {{"name", entry.settings.name},
             {"path", entry.settings.path},
             {"folder", entry.isUsers ? "user" : "administrator"},
             {"readOnly", entry.settings.isReadOnly},
             {"reasons", entry.readOnlyReasons},
             {"modified", TimeText(entry.settings.modified, &gmtime_r, "%Y-%m-%dT%H:%M:%SZ")},
             {"hidden", entry.isHidden},
             {"showHide", std::move(applications)},
             {"shadows", entry.shadowed}});
    }
    return JsonText(document);
}

std::string FolderDocument(std::string const& folder) {
    nlohmann::ordered_json const document{{"version", 1}, {"folder", folder}};
    return JsonText(document);
}

} // namespace joboptions
