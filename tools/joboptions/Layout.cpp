#include "tools/joboptions/Layout.h"

#include "host/Error.h"
#include "tools/joboptions/Differences.h"
#include "tools/joboptions/Failure.h"
#include "tools/joboptions/Input.h"
#include "tools/joboptions/Utf8.h"

#include <algorithm>
#include <fmt/format.h>

namespace joboptions {

namespace {

[[noreturn]] void Refuse(std::string const& file, std::string const& reason) {
    throw Failure(Status::kRefused, fmt::format("{}: {}", InputName(file), reason));
}

bool IsRounding(Difference const& difference) {
    return difference.before != nullptr && difference.after != nullptr &&
           difference.before->If<double>() != nullptr && difference.after->If<double>() != nullptr;
}

// A file that writes its own tail is read back without one only if that is empty.
bool IsEmptyOrDefaultTail(Difference const& difference) {
    auto const* const tail =
        difference.before == nullptr ? nullptr : difference.before->If<pdfsettings::Binary>();
    bool const isAdded = difference.before == nullptr;
    bool const isEmpty = tail != nullptr && tail->bytes.empty();
    return difference.path == pdfsettings::kTailKey && (isAdded || isEmpty);
}

pdfsettings::Settings ReadBack(
    pdfsettings::Component const& component, std::string const& file, std::string const& text) {
    try {
        return pdfsettings::Settings::FromText(component, text);
    } catch (pdfsettings::Error const& error) {
        Refuse(file, fmt::format("what would be written cannot be read again: {}", error.what()));
    }
}

} // namespace

std::string LayOut(
    pdfsettings::Component const& component,
    pdfsettings::Settings const& settings,
    std::string const& file) {
    pdfsettings::Settings const written = ReadBack(component, file, settings.Text());
    pdfsettings::Dictionary const before = settings.Values();
    pdfsettings::Dictionary const after = written.Values();
    auto const differences = Compare(before, after);
    auto const lost = std::ranges::find_if_not(differences, [](Difference const& difference) {
        return IsRounding(difference) || IsEmptyOrDefaultTail(difference);
    });
    if (lost != differences.end()) {
        Refuse(
            file,
            fmt::format("{} cannot be written so that it reads back", VisibleText(lost->path)));
    }
    return written.Text();
}

} // namespace joboptions
