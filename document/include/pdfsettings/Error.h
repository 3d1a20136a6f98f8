// The one exception of the library.
#pragma once

#include "pdfsettings/Export.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>

namespace pdfsettings {

// A position in a text.
struct Place {
    std::size_t line = 1;   // from 1; CR, LF and CR LF end a line alike
    std::size_t column = 1; // from 1, in characters of UTF-8; a byte that belongs to none is one

    bool operator==(Place const&) const = default;
};

// What went wrong. A later version may have more.
enum class Fault {
    kSystem,     // a call of the system failed: see Error::System
    kSyntax,     // a text is no settings file, or no value
    kSchema,     // a schema cannot be used
    kKind,       // a value is of another kind, or out of the range of a type
    kNoValue,    // nothing is stored at a path, and there is no default
    kKey,        // a path holds what cannot be the key of a setting
    kUnwritable, // a value has no form in a settings file that reads back as the same
    kReadOnly,   // the file's owner, or the caller, may not write it
    kConflict,   // the file has changed since it was read, or it exists already
    kBusy,       // another program has the file, longer than the time to wait
    kUntrusted,  // a link on the way to the file could have been planted by another user
    kInUse,      // another component runs in this process
    kStopped,    // the program is ending, or its host stopped the component
    kComponent   // the component reported a failure of another kind
};

// A failure of any function of this library but for memory, which is always std::bad_alloc.
class PDFSETTINGS_API Error : public std::runtime_error {
public:
    // There is no move: none is without its contents.
    Error(Error const&) noexcept = default;
    Error& operator=(Error const&) noexcept = default;
    ~Error() override = default;

    // what() is "FILE:LINE:COLUMN: message", without what is missing.
    Error(
        Fault code,
        std::string const& message,
        std::filesystem::path const& file = {},
        std::optional<Place> where = {},
        std::error_code system = {},
        std::string const& id = {});

    Fault Code() const noexcept;
    std::error_code System() const noexcept;            // for kSystem
    std::filesystem::path const& File() const noexcept; // empty where there is none
    std::optional<Place> Where() const noexcept;        // for kSyntax and kSchema

    // What went wrong, without the file and the place.
    std::string const& Message() const noexcept;

    // Of kSyntax: a word such as "unclosed" that stays the same, see docs/findings.md; else empty.
    std::string const& Id() const noexcept;

    // The same error in a file.
    Error In(std::filesystem::path const& file) const;

private:
    struct Details;

    std::shared_ptr<Details const> fDetails;
};

} // namespace pdfsettings
