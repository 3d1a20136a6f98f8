#include "document/FaultLog.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace pdfsettings::detail {

void FaultLog::Warn(char const* id, Span span, std::string message) {
    Add(id, span, std::move(message), /*leadsAstray=*/false);
}

void FaultLog::WarnOfRest(char const* id, Span span, std::size_t end, std::string message) {
    Warn(id, span, std::move(message));
    NoteRest(end);
}

void FaultLog::WarnAstray(char const* id, Span span, std::string message) {
    Add(id, span, std::move(message), /*leadsAstray=*/true);
    if (!fGoneAstray) {
        fGoneAstray = fFaults.size() - 1;
    }
}

void FaultLog::NoteRest(std::size_t offset) {
    fRest = offset;
    fRestFault = fFaults.size() - 1;
}

bool FaultLog::IsRest(std::size_t offset) const noexcept {
    return fRest == offset;
}

void FaultLog::BlameRest() {
    if (!fGoneAstray) {
        fGoneAstray = fRestFault;
    }
}

std::optional<std::size_t> FaultLog::GoneAstrayAt() const {
    return fGoneAstray ? std::optional(fFaults[*fGoneAstray].fFinding.span.begin) : std::nullopt;
}

void FaultLog::Refuse(char const* id, Span span, std::string message, Blame blame) {
    auto const culprit = blame == Blame::kNothing ? std::nullopt
                         : blame == Blame::kRest  ? std::optional(fRestFault)
                                                  : fGoneAstray;
    if (!culprit) {
        span = Within(span);
        std::erase_if(fFaults, [&](Fault const& fault) { return fault.fFinding.span == span; });
        fFaults.push_back({{Severity::kError, id, span, std::move(message)}, false});
        return;
    }
    fFaults[*culprit].fFinding.severity = Severity::kError;
    auto const behind = fFaults.begin() + static_cast<std::ptrdiff_t>(*culprit) + 1;
    fFaults.erase(
        std::remove_if(behind, fFaults.end(), std::mem_fn(&Fault::fLeadsAstray)), fFaults.end());
}

std::vector<TextFinding> FaultLog::Take() {
    std::vector<TextFinding> findings;
    for (Fault& fault : fFaults) {
        findings.push_back(std::move(fault.fFinding));
    }
    std::ranges::stable_sort(
        findings, {}, [](TextFinding const& finding) { return finding.span.begin; });
    return findings;
}

void FaultLog::Add(char const* id, Span span, std::string message, bool leadsAstray) {
    // A turn adds a few faults at most.
    constexpr std::size_t kMostOfTurn = 8;
    span = Within(span);
    auto const last =
        fFaults.end() - static_cast<std::ptrdiff_t>(std::min(fFaults.size(), kMostOfTurn));
    bool const isRepeated = std::any_of(last, fFaults.end(), [&](Fault const& fault) {
        return fault.fFinding.id == id && fault.fFinding.span == span;
    });
    if (!isRepeated) {
        fFaults.push_back({{Severity::kWarning, id, span, std::move(message)}, leadsAstray});
    }
}

Span FaultLog::Within(Span span) const noexcept {
    return {std::min(span.begin, fTextSize), std::min(span.end, fTextSize)};
}

} // namespace pdfsettings::detail
