// The findings about a text, one for each mistake.
//
// A mistake often causes others, and the log reports only their cause. It remembers two kinds of
// causes. A finding has a rest if a token ends too early ("1,5" is read as 1): scanning resumes at
// this offset, in the middle of what the author wrote, and a mistake at exactly this offset is not
// reported. A finding loses sync if the scanner then reads the text otherwise than the author meant
// it: a string without an end, or a dictionary that takes its neighbours as entries. The log
// remembers the first one. When the text is refused, the scanner says which kind of cause the
// refusal may have (Blame). If the log has such a cause, this finding becomes the error in place of
// the refusal, and later findings that lose sync are removed; otherwise the refusal itself is the
// error. So a refused text has exactly one error, where the text first went wrong.
#pragma once

#include "pdfsettings/Finding.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace pdfsettings::detail {

// One finding in a text.
struct TextFinding {
    Severity severity;
    char const* id;
    Span span; // may be empty at the end of the text
    std::string message;
};

class FindingLog {
public:
    // Spans are limited to textSize bytes.
    explicit FindingLog(std::size_t textSize) noexcept : fTextSize(textSize) {}

    // Adds a warning. A repeated one is ignored: a scanner that makes no progress meets its last
    // mistake twice.
    void Warn(char const* id, Span span, std::string message) {
        Add(id, span, std::move(message), /*losesSync=*/false);
    }

    // Adds a warning with a rest: scanning resumes at end, in the middle of what the author wrote,
    // and a mistake at exactly this offset is a consequence.
    void WarnOfRest(char const* id, Span span, std::size_t end, std::string message) {
        Warn(id, span, std::move(message));
        NoteRest(end);
    }

    // Adds a warning after which the scanner is out of sync: a later refusal is a consequence, and
    // so is every warning of this kind before the refusal.
    void WarnOutOfSync(char const* id, Span span, std::string message) {
        Add(id, span, std::move(message), /*losesSync=*/true);
        if (!fSyncLoss) {
            fSyncLoss = fLogged.size() - 1;
        }
    }

    // Marks offset as the rest of the last finding.
    void NoteRest(std::size_t offset) {
        fRest = offset;
        fRestCause = fLogged.size() - 1;
    }

    // Whether offset is marked as the rest of a finding.
    bool IsRest(std::size_t offset) const noexcept { return fRest == offset; }

    // The finding before the rest becomes the loss of sync, unless sync was lost before.
    void BlameRest() { fSyncLoss = fSyncLoss.value_or(fRestCause); }

    // The beginning of the finding at which sync was lost, if any.
    std::optional<std::size_t> SyncLossAt() const {
        return fSyncLoss ? std::optional(fLogged[*fSyncLoss].fFinding.span.begin) : std::nullopt;
    }

    // The cause of a refusal.
    enum class Blame {
        kNothing, // none: a mistake of its own
        kRest,    // the finding with the last rest
        kSyncLoss // the finding at which sync was lost; none if there is no such finding
    };

    // Refuses the text: the cause, or the refusal itself if there is none, becomes the only error.
    void Refuse(char const* id, Span span, std::string message, Blame blame) {
        auto const culprit = blame == Blame::kNothing ? std::nullopt
                             : blame == Blame::kRest  ? std::optional(fRestCause)
                                                      : fSyncLoss;
        if (!culprit) {
            span = Within(span);
            std::erase_if(
                fLogged, [&](Logged const& logged) { return logged.fFinding.span == span; });
            fLogged.push_back({{Severity::kError, id, span, std::move(message)}, false});
            return;
        }
        fLogged[*culprit].fFinding.severity = Severity::kError;
        auto const behind = fLogged.begin() + static_cast<std::ptrdiff_t>(*culprit) + 1;
        fLogged.erase(
            std::remove_if(behind, fLogged.end(), std::mem_fn(&Logged::fLosesSync)), fLogged.end());
    }

    // Moves out all findings, in the order of the text.
    std::vector<TextFinding> Take() {
        std::vector<TextFinding> findings;
        for (Logged& logged : fLogged) {
            findings.push_back(std::move(logged.fFinding));
        }
        std::ranges::stable_sort(
            findings, {}, [](TextFinding const& finding) { return finding.span.begin; });
        return findings;
    }

private:
    struct Logged {
        TextFinding fFinding;
        bool fLosesSync;
    };

    void Add(char const* id, Span span, std::string message, bool losesSync) {
        // A step adds fewer findings than this.
        constexpr std::size_t kMostOfStep = 8;
        span = Within(span);
        auto const last =
            fLogged.end() - static_cast<std::ptrdiff_t>(std::min(fLogged.size(), kMostOfStep));
        bool const isRepeated = std::any_of(last, fLogged.end(), [&](Logged const& logged) {
            return std::string_view(logged.fFinding.id) == id && logged.fFinding.span == span;
        });
        if (!isRepeated) {
            fLogged.push_back({{Severity::kWarning, id, span, std::move(message)}, losesSync});
        }
    }

    Span Within(Span span) const noexcept {
        return {std::min(span.begin, fTextSize), std::min(span.end, fTextSize)};
    }

    std::size_t fTextSize;
    std::vector<Logged> fLogged;
    std::optional<std::size_t> fRest;     // the last offset marked as a rest
    std::size_t fRestCause = 0;           // index of its finding
    std::optional<std::size_t> fSyncLoss; // index of the finding at which sync was lost
};

} // namespace pdfsettings::detail
