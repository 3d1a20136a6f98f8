// Validating a document against a schema, and what the component would write.
#pragma once

#include "pdfsettings/Document.h"
#include "pdfsettings/Finding.h"
#include "pdfsettings/Schema.h"

#include <optional>
#include <string>
#include <vector>

namespace pdfsettings::detail {

// A finding about the bytes of span.
Finding MakeFinding(
    Document const& document,
    Severity severity,
    char const* id,
    Span span,
    std::string path,
    std::string message);

// The span of the value at a path; for a missing value, the opening bracket of its parent.
Span SpanOf(Document const& document, std::string_view path);

// What the schema rejects, and what its constraints advise against. REQUIRES: the document is not
// refused.
std::vector<Finding> Validate(Document const& document, Schema const& schema);
std::vector<Finding> Warnings(Document const& document, Schema const& schema);

// findings, with suggestions for similar allowed names.
std::vector<Finding>
WithHints(std::vector<Finding> findings, Document const& document, Schema const& schema);

// The findings of after that are not in before. removed: the paths of elements of arrays that were
// removed in between, in order, since later elements have moved.
std::vector<Finding> NewFindings(
    std::vector<Finding> const& before,
    std::vector<Finding> after,
    std::vector<std::string> const& removed);

// The text that the component writes for a document, as it stays when it is read and written again:
// a number rounded to an integer is then written as one. Throws Error (kUnwritable), with the key,
// for a setting that would not read back, apart from rounding.
std::string CanonicalText(Document const& document);

// What the component would round, and what it would write unreadably. REQUIRES: the document is not
// refused.
std::vector<Finding> WritingFindings(Document const& document);

} // namespace pdfsettings::detail
