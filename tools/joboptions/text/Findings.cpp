#include "tools/joboptions/text/Findings.h"

#include "format/SettingPath.h"
#include "pdfsettings/Error.h"
#include "pdfsettings/Path.h"
#include "tools/joboptions/commands/Output.h"
#include "tools/joboptions/text/Differences.h"
#include "tools/joboptions/text/KnownKeys.h"
#include "tools/joboptions/text/Layout.h"
#include "tools/joboptions/text/Utf8.h"
#include "tools/joboptions/text/ValueText.h"

#include <algorithm>
#include <fmt/format.h>

namespace joboptions {

using pdfsettings::Document;
using pdfsettings::DocumentEntry;
using pdfsettings::SettingRule;
using pdfsettings::Severity;
using pdfsettings::Span;

namespace {

// Where settings begin, or would.
Span BeginOf(Document const& document) {
    std::size_t const body = document.Body() ? document.Body()->begin : 0;
    return {body < 2 ? 0 : body - 2, body};
}

// Where the value at a path stands; for one that is missing, where it belongs.
Span SpanOf(Document const& document, std::string const& path) {
    DocumentEntry const* const entry = document.Find(path);
    if (entry != nullptr) {
        return entry->value;
    }
    std::size_t const slash = path.rfind('/');
    if (slash != std::string::npos && slash > 0) {
        Span const parent = SpanOf(document, path.substr(0, slash));
        return {parent.begin, std::min(parent.begin + 2, parent.end)};
    }
    return BeginOf(document);
}

SettingRule const* FindRule(std::vector<SettingRule> const& rules, std::string const& key) {
    auto const rule = std::ranges::find(rules, format::RulePath(key), &SettingRule::key);
    return rule == rules.end() ? nullptr : &*rule;
}

std::vector<std::string> AllowedWords(SettingRule const& rule) {
    std::vector<std::string> words;
    for (pdfsettings::Value const& value : rule.allowed) {
        if (auto const* const word = value.If<pdfsettings::Word>()) {
            words.push_back(word->text);
        }
    }
    return words;
}

// As much of a line as can be shown, around the place that is meant.
struct Excerpt {
    std::string fLine;
    std::string fCarets;
};

Excerpt MakeExcerpt(Document const& document, Span span) {
    constexpr std::size_t kBefore = 60;
    constexpr std::size_t kWidth = 120;
    std::string const& text = document.Text();
    Span line = document.LineAt(span.begin);
    span.end = std::clamp(span.end, span.begin, line.end);
    bool const isCut = span.begin - line.begin > kBefore;
    line.begin = isCut ? span.begin - kBefore : line.begin;
    line.end = std::min(line.end, line.begin + kWidth);
    span.end = std::clamp(span.end, span.begin, line.end);
    auto const shown = [&text](std::size_t begin, std::size_t end) {
        std::string bytes = text.substr(begin, end - begin);
        std::ranges::replace(bytes, '\t', ' ');
        return VisibleText(bytes);
    };
    std::size_t const width = DisplayWidth(shown(span.begin, span.end));
    return {
        shown(line.begin, line.end),
        std::string(DisplayWidth(shown(line.begin, span.begin)), ' ') +
            std::string(std::max<std::size_t>(width, 1), '^')};
}

std::string
FindingLine(std::string const& file, PlacedFinding const& finding, std::string const& severity) {
    return fmt::format(
        "{}:{}:{}: {}{}{}{} [{}]",
        InputName(file),
        finding.place.line,
        finding.place.column,
        severity,
        VisibleText(finding.key),
        finding.key.empty() ? "" : ": ",
        VisibleText(finding.message),
        finding.id);
}

std::vector<PlacedFinding> RoundedNumbers(
    Document const& document,
    pdfsettings::Dictionary const& before,
    pdfsettings::Dictionary const& after) {
    std::vector<PlacedFinding> findings;
    for (Difference const& difference : Compare(before, after)) {
        if (IsOfNumbers(difference)) {
            findings.push_back(MakeFinding(
                document,
                Severity::kWarning,
                "rounded",
                SpanOf(document, difference.path),
                difference.path,
                fmt::format(
                    "{} is written as {}",
                    OneLine(*difference.before),
                    OneLine(*difference.after))));
        }
    }
    return findings;
}

// key: the setting that is to blame, if it is a single one.
PlacedFinding Unwritable(Document const& document, std::optional<std::string> const& key) {
    DocumentEntry const* const entry = key ? document.Find(*key) : nullptr;
    return MakeFinding(
        document,
        Severity::kWarning,
        "unwritable",
        entry != nullptr ? entry->value : BeginOf(document),
        key.value_or(""),
        entry != nullptr ? "the component writes this so that the file cannot be read again"
                         : "the component writes this file so that it cannot be read again");
}

} // namespace

PlacedFinding MakeFinding(
    Document const& document,
    Severity severity,
    std::string id,
    Span span,
    std::string key,
    std::string message) {
    return {
        severity,
        std::move(id),
        span,
        document.PlaceOf(span.begin),
        std::move(key),
        std::move(message)};
}

std::string NameHint(
    pdfsettings::Dictionary const& values,
    std::vector<SettingRule> const& rules,
    pdfsettings::Finding const& finding) {
    SettingRule const* const rule = FindRule(rules, finding.key);
    auto const* const word = As<pdfsettings::Word>(Find(values, finding.key));
    if (rule == nullptr || word == nullptr) {
        return "";
    }
    return MeantText(Nearest(word->text, AllowedWords(*rule)), "/");
}

std::vector<PlacedFinding> TextFindings(Document const& document) {
    std::vector<PlacedFinding> findings;
    for (auto const& [severity, id, span, message] : document.Findings()) {
        findings.push_back(MakeFinding(document, severity, id, span, "", message));
    }
    return findings;
}

std::vector<PlacedFinding> SchemaFindings(
    Document const& document,
    std::vector<pdfsettings::Finding> const& findings,
    std::vector<SettingRule> const& rules) {
    std::vector<PlacedFinding> placed;
    for (pdfsettings::Finding const& finding : findings) {
        std::string const hint = findings.size() < kMostHints
                                     ? NameHint(document.Values(), rules, finding)
                                     : std::string();
        placed.push_back(MakeFinding(
            document,
            Severity::kError,
            "value",
            SpanOf(document, finding.key),
            finding.key,
            finding.message + hint));
    }
    return placed;
}

std::vector<PlacedFinding> WritingFindings(
    pdfsettings::Component const& component,
    Document const& document,
    pdfsettings::Settings const& settings) {
    pdfsettings::Dictionary const before = settings.Values();
    try {
        auto const written = pdfsettings::Settings::FromText(component, settings.Text());
        return RoundedNumbers(document, before, written.Values());
    } catch (pdfsettings::Error const&) {
        return {Unwritable(document, UnwritableKey(component, before))};
    }
}

std::string PlacedFindingText(
    std::string const& file, Document const& document, PlacedFinding const& finding, bool color) {
    auto const [line, carets] = MakeExcerpt(document, finding.span);
    bool const isError = finding.severity == Severity::kError;
    int const number = isError ? kRed : kYellow;
    std::string const severity = Colored(isError ? "error:" : "warning:", number, color) + " ";
    return fmt::format(
        "{}\n{:>5} | {}\n      | {}\n",
        FindingLine(file, finding, severity),
        finding.place.line,
        line,
        carets.substr(0, carets.find('^')) +
            Colored(carets.substr(carets.find('^')), number, color));
}

std::string RefusalText(std::string const& file, Document const& document) {
    auto const findings = TextFindings(document);
    auto const error = std::ranges::find(findings, Severity::kError, &PlacedFinding::severity);
    return error == findings.end() ? std::string() : FindingLine(file, *error, "");
}

} // namespace joboptions
