// A settings file as a text: where each setting stands, what is read of it, and changes that leave
// all other bytes as they are.
//
// The component keeps no places and drops what it cannot read without a word. A Document reads the
// same format in the same way and keeps both. It needs no running component.
#pragma once

#include "pdfsettings/Export.h"
#include "pdfsettings/Finding.h"
#include "pdfsettings/Value.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace pdfsettings {

// Where a setting, or an element of an array, stands.
struct DocumentEntry {
    Span key;              // with its slash; empty for an element
    Span value;            // from its first to its last byte
    std::size_t next = 0;  // the index in Document::Entries() behind all that it holds
    std::size_t depth = 0; // of the dictionary or array that it stands in; 0 for a setting
};

// Why the component refuses a text.
enum class Refusal {
    kNone,
    kInvalidFile,  // its error 6
    kUnknownValue, // its error 7
    kMemory        // its memory error: something has no end, or is nested too deeply
};

// Immutable, and safe to read from any thread. Copies share what was read. What its functions give
// is valid as long as one of them lives.
class PDFSETTINGS_API Document {
public:
    // Reads text, which may hold any bytes. Throws std::bad_alloc only.
    explicit Document(std::string text);

    // There is no move: no document is without a text.
    Document(Document const&) noexcept;
    Document& operator=(Document const&) noexcept;
    ~Document();

    std::string const& Text() const noexcept;

    // kNone when the component reads the text.
    Refusal WhyRefused() const noexcept;

    // Throws Error (kSyntax), with the place and the id, for a text that is refused.
    void RequireRead() const;

    // The settings that it reads, and what follows them in their file; both empty for a text that
    // it refuses.
    Dictionary const& Values() const noexcept;
    std::string const& Tail() const noexcept;

    // What is refused, lost or read otherwise than it looks, in the order of the text, each finding
    // once. A refused text has exactly one error.
    pdfsettings::Findings const& Findings() const noexcept;

    // The settings and elements in the order of the text, each before what it holds; those of a
    // refused text up to where it is refused. Of equal keys in one dictionary the last one counts.
    std::span<DocumentEntry const> Entries() const noexcept;

    // The entry at a path, as in Dictionary::Find; null when there is none.
    DocumentEntry const* Find(std::string_view path) const;

    // The value at a path. Throws Error (kNoValue) with a similar path that there is.
    Value const& At(std::string_view path) const;

    // The key of an entry as the component reads it.
    std::string KeyOf(DocumentEntry const& entry) const;

    // The settings between "<<" and ">>", both left out; nothing for a text without settings and
    // for one that is refused.
    std::optional<Span> Body() const noexcept;

    // The position of the byte at offset. REQUIRES: offset <= Text().size().
    Place PlaceOf(std::size_t offset) const;

    // The line that offset lies in, without its line end. REQUIRES: as PlaceOf.
    Span LineAt(std::size_t offset) const;

    // A document with a value at a path, as Dictionary::Set stores it: in the place of the present
    // one, or as a new entry with the indent and the line end of the entry before it. All other
    // bytes stay: comments, order, number forms and line ends. Throws Error: kNoValue as
    // Dictionary::Set, kKey, kSyntax for a text that is refused, and kUnwritable where the changed
    // text would not read back as the changed values.
    Document With(std::string_view path, Value const& value) const;

    // The same for a value as it stands in a file, whose form is kept. Throws Error (kSyntax) for a
    // text that is no value.
    Document WithText(std::string_view path, std::string_view text) const;

    // The same for the value at a path of another document, byte for byte as it stands there.
    // Throws Error (kNoValue) when there is none.
    Document WithCopy(std::string_view path, Document const& from) const;

    // A document without the value at a path, and without its line when nothing else stands there.
    // All entries of that key are removed. Throws the same, and Error (kNoValue) when there is
    // none.
    Document Without(std::string_view path) const;

private:
    struct Reading;
    std::shared_ptr<Reading const> fReading;
};

} // namespace pdfsettings
