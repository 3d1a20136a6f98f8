// What is wrong with settings, or may be meant otherwise.
#pragma once

#include "pdfsettings/Error.h"
#include "pdfsettings/Export.h"
#include "pdfsettings/Sequence.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace pdfsettings {

enum class Severity {
    kWarning, // something is lost, or is read otherwise than it looks
    kError    // a text is refused because of it, or the schema rejects a value
};

// A run of bytes in a text.
struct Span {
    std::size_t begin = 0; // in bytes from the start of the text
    std::size_t end = 0;   // behind its last byte

    std::size_t Size() const noexcept { return end - begin; }
    bool operator==(Span const&) const = default;
};

// One finding. Immutable; copies share it.
class PDFSETTINGS_API Finding {
public:
    // There is no move: none is without its contents.
    Finding(Finding const&) noexcept = default;
    Finding& operator=(Finding const&) noexcept = default;
    ~Finding() = default;

    Finding(
        Severity severity,
        std::string id,
        std::string path,
        std::string message,
        std::optional<Span> span = {},
        std::optional<Place> where = {});

    Severity Level() const noexcept;

    // A word such as "octal" that stays the same from version to version; see docs/findings.md.
    std::string const& Id() const noexcept;

    // The setting that it is about, fit for every Find(): "ColorImageDict/QFactor",
    // "OtherNamespaces/2"; empty where it is about none, and
    // for what stands in a text otherwise than it looks. Of one
    // with more than 1,000 bytes, which no setting has that a schema knows, only the end behind
    // "...".
    std::string const& Path() const noexcept;

    // What was expected and what was found.
    std::string const& Message() const noexcept;

    // The bytes to be looked at, which may be none at the end of the text, and the place of the
    // first one. Nothing for a finding about values that have no text.
    std::optional<pdfsettings::Span> Bytes() const noexcept;
    std::optional<Place> Where() const noexcept;

    friend PDFSETTINGS_API bool operator==(Finding const& left, Finding const& right);

private:
    struct Data;

    std::shared_ptr<Data const> fData;
};

using Findings = Sequence<Finding>;

} // namespace pdfsettings
