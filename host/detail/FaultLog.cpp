#include "host/detail/FaultLog.h"

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

void FaultLog::Refuse(char const* id, Span span, std::string message) {
    if (!fGoneAstray) {
        Add(id, span, std::move(message), /*leadsAstray=*/false);
        fGoneAstray = fFaults.size() - 1;
    }
    fFaults[*fGoneAstray].fFinding.severity = Severity::kError;
    auto const behind = fFaults.begin() + static_cast<std::ptrdiff_t>(*fGoneAstray) + 1;
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
    span = {std::min(span.begin, fTextSize), std::min(span.end, fTextSize)};
    bool const isRepeated = !fFaults.empty() && fFaults.back().fFinding.id == id &&
                            fFaults.back().fFinding.span == span;
    if (!isRepeated) {
        fFaults.push_back({{Severity::kWarning, id, span, std::move(message)}, leadsAstray});
    }
}

} // namespace pdfsettings::detail
