// What is wrong with a text, each fault once.
//
// One fault often makes others: what follows a number that ends too early is no entry either, and
// a dictionary that swallows its neighbours leaves the text without an end. The log knows what
// comes of a fault that it has, and blames that.
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

    // Adds a warning. One that is in the log already is not added again: a reading without progress
    // meets its last fault twice.
    void Warn(char const* id, Span span, std::string message) {
        Add(id, span, std::move(message), /*leadsAstray=*/false);
    }

    // Adds a warning about something after which the reading goes on at end, in the wrong place:
    // what is found wrong right there is its consequence.
    void WarnOfRest(char const* id, Span span, std::size_t end, std::string message) {
        Warn(id, span, std::move(message));
        NoteRest(end);
    }

    // Adds a warning of something after which the reading has gone astray: a later refusal is its
    // consequence, and so is every warning of this kind in between.
    void WarnAstray(char const* id, Span span, std::string message) {
        Add(id, span, std::move(message), /*leadsAstray=*/true);
        if (!fGoneAstray) {
            fGoneAstray = fLogged.size() - 1;
        }
    }

    // What stands at offset is the rest of the last fault.
    void NoteRest(std::size_t offset) {
        fRest = offset;
        fRestCause = fLogged.size() - 1;
    }

    // Whether what stands at offset is the rest of a fault that is in the log.
    bool IsRest(std::size_t offset) const noexcept { return fRest == offset; }

    // Makes the fault before such a rest the one that leads astray.
    void BlameRest() { fGoneAstray = fGoneAstray.value_or(fRestCause); }

    // Where the fault begins that leads astray, if there is one.
    std::optional<std::size_t> GoneAstrayAt() const {
        return fGoneAstray ? std::optional(fLogged[*fGoneAstray].fFinding.span.begin)
                           : std::nullopt;
    }

    // What a refusal is a consequence of.
    enum class Blame {
        kNothing, // it is a fault of its own
        kRest,    // the fault whose rest stands there
        kAstray   // the fault that led astray, if there is one
    };

    // The text is refused: what is to blame becomes the one error.
    void Refuse(char const* id, Span span, std::string message, Blame blame) {
        auto const culprit = blame == Blame::kNothing ? std::nullopt
                             : blame == Blame::kRest  ? std::optional(fRestCause)
                                                      : fGoneAstray;
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
            std::remove_if(behind, fLogged.end(), std::mem_fn(&Logged::fLeadsAstray)),
            fLogged.end());
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
        bool fLeadsAstray;
    };

    void Add(char const* id, Span span, std::string message, bool leadsAstray) {
        // A turn adds a few faults at most.
        constexpr std::size_t kMostOfTurn = 8;
        span = Within(span);
        auto const last =
            fLogged.end() - static_cast<std::ptrdiff_t>(std::min(fLogged.size(), kMostOfTurn));
        bool const isRepeated = std::any_of(last, fLogged.end(), [&](Logged const& logged) {
            return std::string_view(logged.fFinding.id) == id && logged.fFinding.span == span;
        });
        if (!isRepeated) {
            fLogged.push_back({{Severity::kWarning, id, span, std::move(message)}, leadsAstray});
        }
    }

    Span Within(Span span) const noexcept {
        return {std::min(span.begin, fTextSize), std::min(span.end, fTextSize)};
    }

    std::size_t fTextSize;
    std::vector<Logged> fLogged;
    std::optional<std::size_t> fRest;       // where the rest of the last such fault begins
    std::size_t fRestCause = 0;             // the finding itself
    std::optional<std::size_t> fGoneAstray; // the fault that led there
};

} // namespace pdfsettings::detail
