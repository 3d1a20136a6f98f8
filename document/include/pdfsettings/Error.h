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
    std::size_t line = 1;   // from 1; CR, LF and CR LF are line ends
    std::size_t column = 1; // from 1, in characters of UTF-8; any other byte counts as one

    bool operator==(Place const&) const = default;
};

// What failed. Later versions may have more.
enum class Fault {
    kSystem,     // a system call failed: see Error::System
    kSyntax,     // a text is not a settings file, or not a value
    kSchema,     // a schema cannot be used
    kKind,       // a value is of another kind, or out of range for a type
    kNoValue,    // there is no value at a path, and no default
    kKey,        // a part of a path cannot be the key of a setting
    kUnwritable, // a value has no form in a file that reads back as the same value
    kReadOnly,   // the file's owner, or the caller, may not write it
    kConflict,   // the file has changed since it was read, or it already exists
    kBusy,       // another program uses the file, longer than the time to wait
    kUntrusted,  // another user could have planted a link on the path
    kInUse,      // another component is running in this process
    kStopped,    // the program is ending, or its host stopped the component
    kComponent   // the component reported another failure
};

// The error that all functions of this library throw, except when memory runs out: then they throw
// std::bad_alloc.
class PDFSETTINGS_API Error : public std::runtime_error {
public:
    // Not movable: every error has its contents.
    Error(Error const&) noexcept = default;
    Error& operator=(Error const&) noexcept = default;
    ~Error() override = default;

    // what() is "FILE:LINE:COLUMN: message", without the parts that are missing.
    Error(
        Fault code,
        std::string const& message,
        std::filesystem::path const& file = {},
        std::optional<Place> where = {},
        std::error_code system = {},
        std::string const& id = {});

    Fault Code() const noexcept;
    std::error_code System() const noexcept;            // for kSystem
    std::filesystem::path const& File() const noexcept; // empty if there is none
    std::optional<Place> Where() const noexcept;        // for kSyntax, kSchema, Formatted

    // The message without file and position.
    std::string const& Message() const noexcept;

    // For kSyntax and Document::Formatted, a fixed word such as "unclosed", see docs/findings.md;
    // else empty.
    std::string const& Id() const noexcept;

    // A copy of this error with a file.
    Error In(std::filesystem::path const& file) const;

private:
    struct Details;

    std::shared_ptr<Details const> fDetails;
};

} // namespace pdfsettings
