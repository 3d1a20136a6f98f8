// What a schema rejects of a document, and what the component makes of it when it writes.
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

// The bytes of the value at a path; of one that is missing, those where it belongs.
Span SpanOf(Document const& document, std::string_view path);

// The findings of the schema. REQUIRES: the document is not refused.
std::vector<Finding> Validate(Document const& document, Schema const& schema);

// The same findings, with hints at the names that are meant in the document.
std::vector<Finding>
WithHints(std::vector<Finding> findings, Document const& document, Schema const& schema);

// Those of after that are not among before. removed: the elements of arrays that were removed in
// between, by their paths and in their order, since those behind them have moved.
std::vector<Finding> NewFindings(
    std::vector<Finding> const& before,
    std::vector<Finding> after,
    std::vector<std::string> const& removed);

// The text that the component writes of the settings in a document, once it is at rest: a number
// that is rounded to a whole number is written as such from then on. Throws Error (kUnwritable)
// with the key of what reading it again would not give back, apart from rounded numbers.
std::string CanonicalText(Document const& document);

// What it would round, and what it cannot read again. REQUIRES: the document is not refused.
std::vector<Finding> WritingFindings(Document const& document);

} // namespace pdfsettings::detail
