#include "tools/joboptions/text/Comparison.h"

#include "tools/joboptions/text/Utf8.h"
#include "tools/joboptions/text/ValueText.h"

#include <fmt/format.h>
#include <optional>

namespace joboptions {

namespace {

constexpr char kHead[] = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>Settings compared</title>
<style>
:root { color-scheme: light dark; --line: #bbb; --mark: #ffe9a8; }
@media (prefers-color-scheme: dark) { :root { --line: #555; --mark: #5b4a00; } }
body { font: 15px/1.4 system-ui, sans-serif; margin: 1.5rem; }
table { border-collapse: collapse; width: 100%; table-layout: fixed; margin: .3rem 0 1rem; }
th, td { border: 1px solid var(--line); padding: .25rem .5rem; text-align: left; vertical-align: top;
  overflow-wrap: anywhere; }
td { font-family: ui-monospace, monospace; font-size: .9em; }
th small { display: block; font-weight: normal; opacity: .75; }
td.differs { background: var(--mark); }
td.missing { opacity: .6; }
summary { font-weight: bold; cursor: pointer; }
@media print { body { margin: 0; } tr { break-inside: avoid; } }
</style>
</head>
<body>
<h1>Settings compared</h1>
)";

constexpr char kEnd[] = "</body>\n</html>\n";

std::string Escaped(std::string const& text) {
    std::string escaped;
    for (char const c : VisibleText(text)) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        default:
            escaped += c;
        }
    }
    return escaped;
}

// A value that differs from that of the first set is marked.
std::string CellHtml(
    std::optional<pdfsettings::Value> const& value,
    std::optional<pdfsettings::Value> const& first) {
    std::string const differs = value == first ? "" : "differs";
    std::string const missing = value ? "" : "missing";
    std::string const kinds = differs + (differs.empty() || missing.empty() ? "" : " ") + missing;
    return fmt::format(
        "<td{}>{}</td>",
        kinds.empty() ? "" : " class=\"" + kinds + "\"",
        value ? Escaped(value->Text()) : "not set");
}

std::string RowHtml(pdfsettings::ComparedSetting const& setting) {
    std::string cells;
    for (auto const& value : setting.values) {
        cells += CellHtml(value, setting.values.front());
    }
    std::string const path = Escaped(setting.path);
    std::string const name =
        setting.label.empty() ? path : Escaped(setting.label) + "<small>" + path + "</small>";
    return "<tr><th scope=\"row\">" + name + "</th>" + cells + "</tr>\n";
}

} // namespace

std::string ComparisonPage(ComparedSets const& sets) {
    std::string names = "<tr><th scope=\"col\">Setting</th>";
    for (std::string const& name : sets.names) {
        names += "<th scope=\"col\">" + Escaped(name) + "</th>";
    }
    std::string page = kHead;
    std::optional<std::string> group;
    for (auto const& setting : sets.settings) {
        if (setting.group != group) {
            page += group ? "</tbody></table></details>\n" : "";
            group = setting.group;
            page += "<details open><summary>" + Escaped(group->empty() ? "Others" : *group) +
                    "</summary>\n<table><thead>" + names + "</tr></thead><tbody>\n";
        }
        page += RowHtml(setting);
    }
    page +=
        group ? "</tbody></table></details>\n" : "<p>The sets have no differing settings.</p>\n";
    return page + kEnd;
}

} // namespace joboptions
