// The findings about a text, each mistake once.
//
// One mistake often leads to others: what follows a number that ends too early is not an entry
// either, and a dictionary that swallows its neighbours leaves the text without an end. The log
// recognises a consequence of a finding that it has, and reports the cause alone.
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
    // Spans are cut to a text of so many bytes.
    explicit FindingLog(std::size_t textSize) noexcept : fTextSize(textSize) {}

    // Adds a warning. A repeated one is ignored: a scanner without progress meets its last
    // mistake twice.
    void Warn(char const* id, Span span, std::string message) {
        Add(id, span, std::move(message), /*losesSync=*/false);
    }

    // Adds a warning about something after which scanning resumes at end, in the wrong place: a
    // mistake that is found right there is its consequence.
    void WarnOfRest(char const* id, Span span, std::size_t end, std::string message) {
        Warn(id, span, std::move(message));
        NoteRest(end);
    }

    // Adds a warning after which the scanner is out of sync with the text: a later refusal is its
    // consequence, and so is every warning of this kind in between.
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

    // Whether offset is marked as the rest of a finding in the log.
    bool IsRest(std::size_t offset) const noexcept { return fRest == offset; }

    // Makes the finding before such a rest the one at which sync was lost.
    void BlameRest() { fSyncLoss = fSyncLoss.value_or(fRestCause); }

    // Where the finding begins at which sync was lost, if there is one.
    std::optional<std::size_t> SyncLossAt() const {
        return fSyncLoss ? std::optional(fLogged[*fSyncLoss].fFinding.span.begin) : std::nullopt;
    }

    // What a refusal is a consequence of.
    enum class Blame {
        kNothing, // a mistake of its own
        kRest,    // the finding whose rest is there
        kSyncLoss // the finding at which sync was lost, if there is one
    };

    // Refuses the text: its cause becomes the only error.
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

    // All of them in the order of the text.
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
        // One step adds a few findings at most.
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
    std::optional<std::size_t> fRest;     // where the rest of the last such fault begins
    std::size_t fRestCause = 0;           // the finding itself
    std::optional<std::size_t> fSyncLoss; // the finding at which sync was lost
};

} // namespace pdfsettings::detail
