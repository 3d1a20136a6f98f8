#include "host/detail/NamespacePositions.h"

#include "host/detail/Ref.h"
#include "host/detail/ReportChannel.h"
#include "host/detail/RuntimeValues.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace pdfsettings::detail {

namespace {

constexpr char kNamespaces[] = "OtherNamespaces";
constexpr std::string_view kBeforePosition = "OtherNamespaces/";

// Every element that is judged is one too many.
constexpr char kNoElement[] =
    "< PDFSettings < optional < OtherNamespaces < type array count 0 > > > >";

bool IsAboutElement(Finding const& finding) {
    return finding.key.starts_with(kBeforePosition);
}

// Which elements are judged is the component's knowledge: it is asked about each alone.
bool IsJudged(Bindings const& tables, Value const& element) {
    Dictionary settings;
    settings.Set(kNamespaces, Array::Of({element}));
    Ref<POSDict> const dict = BuildValues(tables, settings);
    auto const alone = Share(tables, ReportedCall("NewFromDict", [&] {
                                 return tables.settings.NewFromDict(dict.get(), kNoElement);
                             }));
    auto const errors = Share(tables, ReportedCall("IsPDFSettingsValid", [&] {
                                  return tables.settings.IsPDFSettingsValid(alone.get());
                              }));
    return tables.arrays.Count(errors.get()) != 0;
}

std::vector<std::size_t> JudgedPositions(Bindings const& tables, Array const& namespaces) {
    std::vector<std::size_t> positions;
    for (std::size_t position = 0; position < namespaces.Size(); ++position) {
        if (IsJudged(tables, namespaces[position])) {
            positions.push_back(position);
        }
    }
    return positions;
}

void Restore(std::vector<std::size_t> const& positions, std::string& key) {
    char const* const begin = key.data() + kBeforePosition.size();
    char const* const end = key.data() + key.size();
    std::size_t position = 0;
    auto const [stop, error] = std::from_chars(begin, end, position);
    if (error == std::errc() && position < positions.size()) {
        std::string const rest(stop, end);
        key = std::string(kBeforePosition) + std::to_string(positions[position]) + rest;
    }
}

} // namespace

void RestorePositions(
    Bindings const& tables, Dictionary const& settings, std::vector<Finding>& findings) {
    Value const* const value = settings.Get(kNamespaces);
    auto const* const namespaces = value == nullptr ? nullptr : value->If<Array>();
    if (namespaces == nullptr || std::ranges::none_of(findings, &IsAboutElement)) {
        return;
    }
    auto const positions = JudgedPositions(tables, *namespaces);
    for (Finding& finding : findings) {
        if (IsAboutElement(finding)) {
            Restore(positions, finding.key);
        }
    }
}

} // namespace pdfsettings::detail
