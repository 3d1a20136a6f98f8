// What stands in a settings file otherwise than its author may think.
#pragma once

#include <cstddef>
#include <string>

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

} // namespace pdfsettings
