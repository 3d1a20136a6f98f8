#include "pdfsettings/Document.h"

#include "document/DeepStack.h"
#include "document/DocumentScanner.h"

#include <memory>
#include <utility>

namespace pdfsettings {

Document::Document(std::string text) : fText(std::move(text)), fLines(fText) {
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
    fFindings = scanner->fFaults.Take();
    fBody = scanner->fBody;
    fTree = detail::EntryTree(fText, fEntries);
}

DocumentEntry const* Document::Find(std::string_view path) const {
    auto const place = fTree.Find(fText, fEntries, path);
    return place ? &fEntries[*place] : nullptr;
}

std::string Document::KeyOf(DocumentEntry const& entry) const {
    return std::string(detail::KeyIn(fText, entry));
}

Place Document::PlaceOf(std::size_t offset) const {
    return fLines.PlaceOf(fText, offset);
}

Span Document::LineAt(std::size_t offset) const {
    return fLines.LineAt(fText, offset);
}

} // namespace pdfsettings
