#include "tools/joboptions/text/Layout.h"

#include "pdfsettings/Error.h"
#include "tools/joboptions/commands/Output.h"
#include "tools/joboptions/text/Differences.h"
#include "tools/joboptions/text/Utf8.h"

#include <algorithm>

namespace joboptions {

namespace {

[[noreturn]] void RefuseKey(std::string const& file, std::string const& key) {
    Fail(Status::kRefused, file, VisibleText(key) + " cannot be written so that it reads back");
}

// A file that writes its own tail is read back without one only if that is empty.
bool IsEmptyOrDefaultTail(Difference const& difference) {
    auto const* const tail =
        difference.before == nullptr ? nullptr : difference.before->If<pdfsettings::Binary>();
    bool const isAdded = difference.before == nullptr;
    bool const isEmpty = tail != nullptr && tail->bytes.empty();
    return difference.path == pdfsettings::kTailKey && (isAdded || isEmpty);
}

bool ReadsBack(pdfsettings::Component const& component, pdfsettings::Dictionary const& values) {
    try {
        auto const settings = pdfsettings::Settings::FromValues(component, values);
        return pdfsettings::Settings::FromText(component, settings.Text()).Values().Size() ==
               values.Size();
    } catch (pdfsettings::Error const&) {
        return false;
    }
}

pdfsettings::Settings ReadBack(
    pdfsettings::Component const& component,
    pdfsettings::Settings const& settings,
    std::string const& file) {
    try {
        return pdfsettings::Settings::FromText(component, settings.Text());
    } catch (pdfsettings::Error const& error) {
        if (auto const key = UnwritableKey(component, settings.Values())) {
            RefuseKey(file, *key);
        }
        std::string const reason = error.what();
        Fail(Status::kRefused, file, "what would be written cannot be read again: " + reason);
    }
}

} // namespace

std::optional<std::string>
UnwritableKey(pdfsettings::Component const& component, pdfsettings::Dictionary const& values) {
    for (std::size_t place = 0; place < values.Size(); ++place) {
        pdfsettings::Dictionary alone;
        alone.Set(values.KeyAt(place), values.ValueAt(place));
        alone.Set(pdfsettings::kTailKey, pdfsettings::Binary{pdfsettings::kTailKey, "tail"});
        if (!ReadsBack(component, alone)) {
            return values.KeyAt(place);
        }
    }
    return std::nullopt;
}

std::string LayOut(
    pdfsettings::Component const& component,
    pdfsettings::Settings const& settings,
    std::string const& file) {
    pdfsettings::Settings const written = ReadBack(component, settings, file);
    pdfsettings::Dictionary const before = settings.Values();
    pdfsettings::Dictionary const after = written.Values();
    auto const differences = Compare(before, after);
    auto const lost = std::ranges::find_if_not(differences, [](Difference const& difference) {
        return IsOfNumbers(difference) || IsEmptyOrDefaultTail(difference);
    });
    if (lost != differences.end()) {
        RefuseKey(file, lost->path);
    }
    return written.Text();
}

} // namespace joboptions
