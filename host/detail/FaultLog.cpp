#include "host/detail/FaultLog.h"

#include <algorithm>
#include <utility>

namespace pdfsettings::detail {

void FaultLog::Warn(char const* id, Span span, std::string message) {
    fFindings.push_back({Severity::kWarning, id, span, std::move(message)});
}

void FaultLog::WarnOfRest(char const* id, Span span, std::size_t end, std::string message) {
    fRest = end;
    fRestFinding = fFindings.size();
    Warn(id, span, std::move(message));
}

void FaultLog::WarnAstray(char const* id, Span span, std::string message) {
    if (!fGoneAstray) {
        fGoneAstray = fFindings.size();
    }
    Warn(id, span, std::move(message));
}

bool FaultLog::IsRest(std::size_t offset) const noexcept {
    return fRest == offset;
}

void FaultLog::BlameRest() {
    if (!fGoneAstray) {
        fGoneAstray = fRestFinding;
    }
}

void FaultLog::Refuse(char const* id, Span span, std::string message) {
    if (!fGoneAstray) {
        fGoneAstray = fFindings.size();
        Warn(id, span, std::move(message));
    }
    fFindings[*fGoneAstray].severity = Severity::kError;
}

std::vector<TextFinding> FaultLog::Take() {
    std::ranges::stable_sort(
        fFindings, {}, [](TextFinding const& finding) { return finding.span.begin; });
    return std::move(fFindings);
}

} // namespace pdfsettings::detail
