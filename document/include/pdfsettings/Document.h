// A settings file as a text: where each setting stands, and what the component makes of it.
//
// The component keeps no places and drops what it cannot read without a word. A Document reads the
// same format in the same way and keeps both. It needs no running component.
#pragma once

#include "pdfsettings/Export.h"
#include "pdfsettings/Value.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pdfsettings {

enum class Severity {
    kWarning, // something is lost, or is taken otherwise than it looks
    kError    // because of it the text is refused
};

// A run of bytes in a text.
struct Span {
    std::size_t begin = 0; // in bytes from the start of the text
    std::size_t end = 0;   // behind its last byte

    std::size_t Size() const noexcept { return end - begin; }
    bool operator==(Span const&) const = default;
};

// One fault in a text.
struct TextFinding {
    Severity severity;
    std::string id; // stable: a word such as "octal", listed in docs/findings.md
    Span span;      // of the text that is to be looked at; may be empty at the end of the text
    std::string message;
};

// Where a byte stands.
struct Place {
    std::size_t line = 1;   // from 1; CR, LF and CR LF end a line alike
    std::size_t column = 1; // from 1, in characters of UTF-8; a byte that belongs to none is one

    bool operator==(Place const&) const = default;
};

// Where a setting, or an element of an array, stands.
struct DocumentEntry {
    Span key;              // with its slash; empty for an element
    Span value;            // from its first to its last byte
    std::size_t next = 0;  // the place in Document::Entries() behind all that it holds
    std::size_t depth = 0; // of the dictionary or array that it stands in; 0 for a setting
};

// Why the component refuses a text.
enum class Refusal {
    kNone,
    kInvalidFile,  // its error 6
    kUnknownValue, // its error 7
    kMemory        // its memory error: something has no end, or is nested too deeply
};

// Immutable, and safe to read from any thread. Copies share what was read.
class PDFSETTINGS_API Document {
public:
    // Reads text, which may hold any bytes. Throws std::bad_alloc only.
    explicit Document(std::string text);

    // There is no move: no document is without a text.
    Document(Document const&) noexcept = default;
    Document& operator=(Document const&) noexcept = default;
    ~Document() = default;

    std::string const& Text() const noexcept;

    // kNone when the component reads the text, and then the settings that it reads. No settings for
    // a text that it refuses.
    Refusal WhyRefused() const noexcept;
    Dictionary const& Values() const noexcept;

    // What is refused, lost or taken otherwise than it looks, in the order of the text, each fault
    // once. A refused text has exactly one error.
    std::vector<TextFinding> const& Findings() const noexcept;

    // The settings and elements in the order of the text, each before what it holds; those of a
    // refused text up to where it is refused. Of equal keys in one dictionary the last one counts.
    std::vector<DocumentEntry> const& Entries() const noexcept;

    // The entry at a path of keys and positions, as in Find() of Path.h; null when there is none.
    // Valid as long as the document.
    DocumentEntry const* Find(std::string_view path) const;

    // The key of an entry as the component reads it.
    std::string KeyOf(DocumentEntry const& entry) const;

    // The settings between "<<" and ">>", both left out; nothing for a text without settings and
    // for one that is refused.
    std::optional<Span> Body() const noexcept;

    // Where the byte at offset stands. REQUIRES: offset <= Text().size().
    Place PlaceOf(std::size_t offset) const;

    // The line that offset lies in, without its line end. REQUIRES: as PlaceOf.
    Span LineAt(std::size_t offset) const;

private:
    struct Reading;
    std::shared_ptr<Reading const> fReading;
};

} // namespace pdfsettings
