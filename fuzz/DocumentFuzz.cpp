// A document and the component must make the same of every text, a document's places must lie in
// its text, and the standard layout must change nothing that is read.
#include "fuzz/Require.h"
#include "tests/support/Agreement.h"

#include <cstdint>
#include <string>

namespace {

void RequirePlaces(pdfsettings::Document const& document) {
    for (auto const& finding : document.Findings()) {
        auto const span = *finding.Bytes();
        bool const isInside = span.begin <= span.end && span.end <= document.Text().size();
        fuzz::Require(isInside, "a finding lies outside: " + finding.Id());
        static_cast<void>(document.LineAt(span.begin));
    }
}

void RequireSameInLayout(pdfsettings::Document const& document, bool isSorted) {
    try {
        auto const result = document.Formatted({isSorted});
        bool const isSame =
            result.Values() == document.Values() && result.Tail() == document.Tail();
        fuzz::Require(isSame, "the layout has other settings: " + result.Text());
        std::string const again = result.Formatted({isSorted}).Text();
        fuzz::Require(again == result.Text(), "the layout changes again: " + result.Text());
    } catch (pdfsettings::Error const& error) {
        fuzz::Require(error.Where().has_value(), error.what());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string const text(reinterpret_cast<char const*>(data), size);
    pdfsettings::Document const document(text);
    std::string const expected = support::Outcome(text);
    std::string const found = support::Outcome(document);
    fuzz::Require(expected == found, "the component: " + expected + "\nthe document: " + found);
    RequirePlaces(document);
    RequireSameInLayout(document, false);
    RequireSameInLayout(document, true);
    return 0;
}
