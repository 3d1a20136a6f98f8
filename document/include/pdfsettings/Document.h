// A settings file as text: the position of each setting, the values that the component reads from
// it, and changes that leave all other bytes as they are.
//
// The component keeps no positions and silently drops what it cannot read. A Document reads the
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

// The position of a setting or of an element of an array.
struct DocumentEntry {
    Span key;              // with its slash; empty for an element
    Span value;            // from its first to its last byte
    std::size_t next = 0;  // the index in Document::Entries() after all nested entries
    std::size_t depth = 0; // of nesting; 0 for a setting
};

// Why the component refuses a text.
enum class Refusal {
    kNone,
    kInvalidFile,  // its error 6
    kUnknownValue, // its error 7
    kMemory        // its memory error: something has no end, or is nested too deep
};

// What Document::Formatted does beside the layout.
struct LayoutOptions {
    // Puts settings in the order of the bytes of their keys, in nested dictionaries too.
    bool isSorted = false;
};

// Immutable, and safe to read from any thread. Copies share their contents. References and spans
// that the functions return are valid as long as one of the copies exists.
class PDFSETTINGS_API Document {
public:
    // Reads text, which may have any bytes. Throws only std::bad_alloc.
    explicit Document(std::string text);

    // Not movable: every document has its text.
    Document(Document const&) noexcept;
    Document& operator=(Document const&) noexcept;
    ~Document();

    std::string const& Text() const noexcept;

    // kNone when the component reads the text.
    Refusal WhyRefused() const noexcept;

    // Throws Error (kSyntax), with position and id, if the text is refused; otherwise does nothing.
    void RequireRead() const;

    // The settings that the component reads, and the text after them; both empty if the text is
    // refused.
    Dictionary const& Values() const noexcept;
    std::string const& Tail() const noexcept;

    // What is refused, lost, or read otherwise than it looks, in the order of the text, one finding
    // for each mistake. A refused text has exactly one error.
    pdfsettings::Findings const& Findings() const noexcept;

    // The settings and elements in the order of the text, each before those nested in it; for a
    // refused text, those before the refusal. Of equal keys in one dictionary the last one counts.
    std::span<DocumentEntry const> Entries() const noexcept;

    // The entry at a path, as in Dictionary::Find; null if there is none.
    DocumentEntry const* Find(std::string_view path) const;

    // The value at a path. Throws Error (kNoValue), with a similar path that exists, if there is
    // none.
    Value const& At(std::string_view path) const;

    // The key of an entry as the component reads it.
    std::string KeyOf(DocumentEntry const& entry) const;

    // The span between "<<" and ">>"; nothing if the text has no settings or is refused.
    std::optional<Span> Body() const noexcept;

    // The line and column of an offset. REQUIRES: offset <= Text().size().
    Place PlaceOf(std::size_t offset) const;

    // The line of an offset, without its line end. REQUIRES: as PlaceOf.
    Span LineAt(std::size_t offset) const;

    // A document with a value at a path, as Dictionary::Set stores it: in place of the present
    // value, or as a new entry with the indent and line end of the entry before it. All other bytes
    // stay: comments, order, forms of numbers and line ends. Throws Error: kNoValue as
    // Dictionary::Set, kKey, kSyntax if the text is refused, and kUnwritable if the changed text
    // would not read back as the changed values.
    Document With(std::string_view path, Value const& value) const;

    // As With, for a value in the syntax of a file, whose form is kept. Throws Error (kSyntax) if
    // text is not a value.
    Document WithText(std::string_view path, std::string_view text) const;

    // As With, for the value at a path of another document, copied byte for byte. Throws Error
    // (kNoValue) if from has no value there.
    Document WithCopy(std::string_view path, Document const& from) const;

    // A document without the value at a path, and without its line if nothing else is on it.
    // Removes all entries of that key. Throws as With, and Error (kNoValue) if there is no value.
    Document Without(std::string_view path) const;

    // A document with the same values in the standard layout, which docs/format.md describes: each
    // setting on a line of its own. Comments, scalars and the form of line ends stay, and so does
    // every byte before "<<" and behind the keyword. Formatting the result gives the result. Takes
    // time linear in the size of the text, apart from sorting. Throws Error with the position:
    // kSyntax if the text is refused; kUnwritable if something in it belongs to no setting, or if
    // it would be read otherwise, with the id of the finding that is the cause if there is one.
    Document Formatted(LayoutOptions const& options = {}) const;

private:
    struct PDFSETTINGS_LOCAL Reading;
    std::shared_ptr<Reading const> fReading;
};

} // namespace pdfsettings
