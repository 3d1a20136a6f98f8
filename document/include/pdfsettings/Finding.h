// Findings: problems of settings, and text that is read otherwise than it looks.
#pragma once

#include "pdfsettings/Error.h"
#include "pdfsettings/Export.h"
#include "pdfsettings/Sequence.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace pdfsettings {

enum class Severity {
    kWarning, // something is lost, or is read otherwise than it looks
    kError    // the text is refused because of it, or the schema rejects a value
};

// A range of bytes in a text.
struct Span {
    std::size_t begin = 0; // offset in bytes from the start of the text
    std::size_t end = 0;   // after the last byte

    std::size_t Size() const noexcept { return end - begin; }
    bool operator==(Span const&) const = default;
};

// One finding. Immutable; copies share their contents.
class PDFSETTINGS_API Finding {
public:
    // Not movable: every finding has its contents.
    Finding(Finding const&) noexcept = default;
    Finding& operator=(Finding const&) noexcept = default;
    ~Finding() = default;

    Finding(
        Severity severity,
        std::string id,
        std::string path,
        std::string message,
        std::optional<Span> span = {},
        std::optional<Place> where = {},
        std::vector<Finding> related = {});

    Severity Level() const noexcept;

    // A fixed word such as "octal", the same in all later versions; see docs/findings.md.
    std::string const& Id() const noexcept;

    // The path of the setting, for any Find(): "ColorImageDict/QFactor", "OtherNamespaces/2". Empty
    // for a finding about no single setting, and for text that is read otherwise than it looks. Of
    // a path with more than 1,000 bytes, which no setting in a schema has, only the end after
    // "...".
    std::string const& Path() const noexcept;

    // What was expected and what was found.
    std::string const& Message() const noexcept;

    // The span that the finding is about, which may be empty at the end of the text, and the
    // position of its first byte. Nothing for values without a text.
    std::optional<pdfsettings::Span> Bytes() const noexcept;
    std::optional<Place> Where() const noexcept;

    // The other settings that a rule between settings was violated with: their paths and positions.
    std::span<Finding const> Related() const noexcept;

    friend PDFSETTINGS_API bool operator==(Finding const& left, Finding const& right);

private:
    struct Data;

    std::shared_ptr<Data const> fData;
};

using Findings = Sequence<Finding>;

} // namespace pdfsettings
