#include "document/FindingLog.h"

#include <algorithm>
#include <functional>

namespace pdfsettings::detail {

void FindingLog::WarnAstray(char const* id, Span span, std::string message) {
    Add(id, span, std::move(message), /*leadsAstray=*/true);
    if (!fGoneAstray) {
        fGoneAstray = fLogged.size() - 1;
    }
}

std::optional<std::size_t> FindingLog::GoneAstrayAt() const {
    return fGoneAstray ? std::optional(fLogged[*fGoneAstray].fFinding.span.begin) : std::nullopt;
}

void FindingLog::Refuse(char const* id, Span span, std::string message, Blame blame) {
    auto const culprit = blame == Blame::kNothing ? std::nullopt
                         : blame == Blame::kRest  ? std::optional(fRestCause)
                                                  : fGoneAstray;
    if (!culprit) {
        span = Within(span);
        std::erase_if(fLogged, [&](Logged const& logged) { return logged.fFinding.span == span; });
        fLogged.push_back({{Severity::kError, id, span, std::move(message)}, false});
        return;
    }
    fLogged[*culprit].fFinding.severity = Severity::kError;
    auto const behind = fLogged.begin() + static_cast<std::ptrdiff_t>(*culprit) + 1;
    fLogged.erase(
        std::remove_if(behind, fLogged.end(), std::mem_fn(&Logged::fLeadsAstray)), fLogged.end());
}

std::vector<TextFinding> FindingLog::Take() {
    std::vector<TextFinding> findings;
    for (Logged& logged : fLogged) {
        findings.push_back(std::move(logged.fFinding));
    }
    std::ranges::stable_sort(
        findings, {}, [](TextFinding const& finding) { return finding.span.begin; });
    return findings;
}

void FindingLog::Add(char const* id, Span span, std::string message, bool leadsAstray) {
    // A turn adds a few faults at most.
    constexpr std::size_t kMostOfTurn = 8;
    span = Within(span);
    auto const last =
        fLogged.end() - static_cast<std::ptrdiff_t>(std::min(fLogged.size(), kMostOfTurn));
    bool const isRepeated = std::any_of(last, fLogged.end(), [&](Logged const& logged) {
        return logged.fFinding.id == id && logged.fFinding.span == span;
    });
    if (!isRepeated) {
        fLogged.push_back({{Severity::kWarning, id, span, std::move(message)}, leadsAstray});
    }
}

Span FindingLog::Within(Span span) const noexcept {
    return {std::min(span.begin, fTextSize), std::min(span.end, fTextSize)};
}

} // namespace pdfsettings::detail
