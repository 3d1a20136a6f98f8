#include "tools/joboptions/text/Findings.h"

#include "tools/joboptions/commands/Output.h"
#include "tools/joboptions/text/Utf8.h"

#include <algorithm>
#include <fmt/format.h>

namespace joboptions {

using pdfsettings::Document;
using pdfsettings::Finding;
using pdfsettings::Severity;
using pdfsettings::Span;

namespace {

// The part of a line around a span, as far as it can be shown.
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

} // namespace

std::string
FindingText(std::string const& file, Document const& document, Finding const& finding, bool color) {
    auto const [line, carets] = MakeExcerpt(document, *finding.Bytes());
    bool const isError = finding.Level() == Severity::kError;
    int const number = isError ? kRed : kYellow;
    std::string text = fmt::format(
        "{}:{}:{}: {} {}{}{} [{}]\n{:>5} | {}\n      | {}\n",
        InputName(file),
        finding.Where()->line,
        finding.Where()->column,
        Colored(isError ? "error:" : "warning:", number, color),
        VisibleText(finding.Path()),
        finding.Path().empty() ? "" : ": ",
        VisibleText(finding.Message()),
        finding.Id(),
        finding.Where()->line,
        line,
        carets.substr(0, carets.find('^')) +
            Colored(carets.substr(carets.find('^')), number, color));
    for (Finding const& related : finding.Related()) {
        text += fmt::format(
            "{}:{}:{}: note: see {}\n",
            InputName(file),
            related.Where()->line,
            related.Where()->column,
            VisibleText(related.Path()));
    }
    return text;
}

std::string RepairText(std::string const& file, Finding const& repair, bool isMade, bool color) {
    return fmt::format(
        "{}:{}:{}: {} {} [{}]\n",
        InputName(file),
        repair.Where()->line,
        repair.Where()->column,
        Colored(isMade ? "repaired:" : "can be repaired:", kGreen, color),
        VisibleText(repair.Message()),
        repair.Id());
}

std::string ErrorText(std::string const& file, pdfsettings::Error const& error) {
    std::string const place =
        error.Where() ? fmt::format("{}:{}:", error.Where()->line, error.Where()->column) : "";
    return fmt::format(
        "{}:{} {}{}",
        InputName(file),
        place,
        VisibleText(error.Message()),
        error.Id().empty() ? "" : " [" + error.Id() + "]");
}

} // namespace joboptions
