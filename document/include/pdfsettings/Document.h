// A settings file as a text: where each setting stands, and what the component makes of it.
//
// The component keeps no places and drops what it cannot read without a word. A Document reads the
// same format in the same way and keeps both. It needs no running component.
#pragma once

#include "pdfsettings/DocumentEntry.h"
#include "pdfsettings/Export.h"
#include "pdfsettings/TextFinding.h"
#include "pdfsettings/Value.h"
#include "pdfsettings/detail/EntryTree.h"
#include "pdfsettings/detail/TextLines.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pdfsettings {

// Why the component refuses a text.
enum class Refusal {
    kNone,
    kInvalidFile,  // its error 6
    kUnknownValue, // its error 7
    kMemory        // its memory error: something has no end, or is nested too deeply
};

// Immutable. Safe to read from any thread.
class PDFSETTINGS_API Document {
public:
    // Reads text, which may hold any bytes. Throws std::bad_alloc only.
    explicit Document(std::string text);

    std::string const& Text() const noexcept { return fText; }

    // kNone when the component reads the text, and then the settings that it reads. No settings for
    // a text that it refuses.
    Refusal WhyRefused() const noexcept { return fRefusal; }
    Dictionary const& Values() const noexcept { return fValues; }

    // What is refused, lost or taken otherwise than it looks, in the order of the text, each fault
    // once. A refused text has exactly one error.
    std::vector<TextFinding> const& Findings() const noexcept { return fFindings; }

    // The settings and elements in the order of the text, each before what it holds; those of a
    // refused text up to where it is refused. Of equal keys in one dictionary the last one counts.
    std::vector<DocumentEntry> const& Entries() const noexcept { return fEntries; }

    // The entry at a path of keys and positions, as in Find() of Path.h; null when there is none.
    // Valid as long as the document.
    DocumentEntry const* Find(std::string_view path) const;

    // The key of an entry as the component reads it.
    std::string KeyOf(DocumentEntry const& entry) const;

    // The settings between "<<" and ">>", both left out; nothing for a text without settings and
    // for one that is refused.
    std::optional<Span> Body() const noexcept { return fBody; }

    // Where the byte at offset stands. REQUIRES: offset <= Text().size().
    Place PlaceOf(std::size_t offset) const;

    // The line that offset lies in, without its line end. REQUIRES: as PlaceOf.
    Span LineAt(std::size_t offset) const;

private:
    std::string fText;
    Refusal fRefusal = Refusal::kNone;
    Dictionary fValues;
    std::vector<DocumentEntry> fEntries;
    std::vector<TextFinding> fFindings;
    std::optional<Span> fBody;
    detail::EntryTree fTree;
    detail::TextLines fLines;
};

} // namespace pdfsettings
