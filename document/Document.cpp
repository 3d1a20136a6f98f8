#include "pdfsettings/Document.h"

#include "document/DeepStack.h"
#include "document/DocumentPlaces.h"
#include "document/DocumentScanner.h"

#include <utility>

namespace pdfsettings {

struct Document::Reading {
    explicit Reading(std::string text) : fText(std::move(text)), fLines(fText) {
        auto scanner = std::make_unique<detail::DocumentScanner>(fText);
        scanner->Scan();
        // The component goes deeper with the same stack.
        if (scanner->fIsTooDeep) {
            detail::RunOnDeepStack([this, &scanner] {
                scanner = std::make_unique<detail::DocumentScanner>(fText);
                scanner->Scan();
            });
        }
        fRefusal = scanner->fRefusal;
        fValues = std::move(scanner->fValues);
        fEntries = std::move(scanner->fEntries);
        fFindings = scanner->fFindings.Take();
        fBody = scanner->fBody;
        fTree = detail::EntryTree(fText, fEntries);
    }

    std::string const fText;
    detail::TextLines const fLines;
    Refusal fRefusal = Refusal::kNone;
    Dictionary fValues;
    std::vector<DocumentEntry> fEntries;
    std::vector<TextFinding> fFindings;
    std::optional<Span> fBody;
    detail::EntryTree fTree;
};

Document::Document(std::string text) : fReading(std::make_shared<Reading const>(std::move(text))) {}

std::string const& Document::Text() const noexcept {
    return fReading->fText;
}

Refusal Document::WhyRefused() const noexcept {
    return fReading->fRefusal;
}

Dictionary const& Document::Values() const noexcept {
    return fReading->fValues;
}

std::vector<TextFinding> const& Document::Findings() const noexcept {
    return fReading->fFindings;
}

std::vector<DocumentEntry> const& Document::Entries() const noexcept {
    return fReading->fEntries;
}

std::optional<Span> Document::Body() const noexcept {
    return fReading->fBody;
}

DocumentEntry const* Document::Find(std::string_view path) const {
    auto const place = fReading->fTree.Find(Text(), Entries(), path);
    return place ? &Entries()[*place] : nullptr;
}

std::string Document::KeyOf(DocumentEntry const& entry) const {
    return std::string(detail::KeyIn(Text(), entry));
}

Place Document::PlaceOf(std::size_t offset) const {
    return fReading->fLines.PlaceOf(Text(), offset);
}

Span Document::LineAt(std::size_t offset) const {
    return fReading->fLines.LineAt(Text(), offset);
}

} // namespace pdfsettings
