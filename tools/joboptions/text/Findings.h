// What is said about a file, at its place in it.
#pragma once

#include "pdfsettings/Component.h"
#include "pdfsettings/Document.h"
#include "pdfsettings/Finding.h"
#include "pdfsettings/Schema.h"
#include "pdfsettings/Settings.h"

#include <optional>
#include <string>
#include <vector>

namespace joboptions {

// One finding with its place.
struct PlacedFinding {
    pdfsettings::Severity severity;
    std::string id; // see docs/findings.md
    pdfsettings::Span span;
    pdfsettings::Place place; // of the first byte of span
    std::string key;          // the path of the setting, if it is about one
    std::string message;
};

// A file of nothing but faults must not take for ever: so many of one kind come with a hint at what
// was probably meant.
constexpr std::size_t kMostHints = 100;

// A finding about the bytes of span.
PlacedFinding MakeFinding(
    pdfsettings::Document const& document,
    pdfsettings::Severity severity,
    std::string id,
    pdfsettings::Span span,
    std::string key,
    std::string message);

// What stands in a text otherwise than it looks.
std::vector<PlacedFinding> TextFindings(pdfsettings::Document const& document);

// "; did you mean …?" where the value at fault is nearly a name that is allowed; else empty.
std::string NameHint(
    pdfsettings::Dictionary const& values,
    std::vector<pdfsettings::SettingRule> const& rules,
    pdfsettings::Finding const& finding);

// What the schema does not allow; a name that is nearly an allowed one is named.
std::vector<PlacedFinding> SchemaFindings(
    pdfsettings::Document const& document,
    std::vector<pdfsettings::Finding> const& findings,
    std::vector<pdfsettings::SettingRule> const& rules);

// What the component writes otherwise than it is: rounded numbers, and what it cannot read again.
std::vector<PlacedFinding> WritingFindings(
    pdfsettings::Component const& component,
    pdfsettings::Document const& document,
    pdfsettings::Settings const& settings);

// "file:line:column: error: key: message [id]", and the line of the text with carets below what is
// meant. With line ends. With color, the severity and the carets are coloured for a terminal.
std::string PlacedFindingText(
    std::string const& file,
    pdfsettings::Document const& document,
    PlacedFinding const& finding,
    bool color);

// Why the component refuses a text, "file:line:column: message [id]"; empty for one that it reads.
std::string RefusalText(std::string const& file, pdfsettings::Document const& document);

// Of its text and its values.
struct Judgement {
    std::string file;
    std::string error; // why it could not be read or parsed; empty if it could
    std::optional<pdfsettings::Document> document; // none for a file that could not be read
    std::vector<PlacedFinding> findings;           // in the order of the text
};

// Of its layout.
struct LayoutJudgement {
    std::string file;
    std::string error; // why it could not be read, or why it was left as it is; empty if it was not
    bool differs = false; // it is, or was, laid out otherwise
};

} // namespace joboptions
