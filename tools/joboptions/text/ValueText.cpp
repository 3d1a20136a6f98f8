#include "tools/joboptions/text/ValueText.h"

#include "format/Tokens.h"
#include "tools/joboptions/commands/Output.h"
#include "tools/joboptions/text/Utf8.h"

#include <fmt/format.h>

namespace joboptions {

// Brackets and blanks are never part of another character, so the whole text can be made visible at
// once.
std::string OneLine(pdfsettings::Value const& value) {
    return VisibleText(value.Text());
}

std::string OneLine(std::string const& path, pdfsettings::Value const& value) {
    return path == format::kTailKey ? VisibleText(value.Bytes()) : OneLine(value);
}

std::string CommaList(std::span<pdfsettings::Value const> values) {
    std::string text;
    for (pdfsettings::Value const& value : values) {
        text += (text.empty() ? "" : ", ") + OneLine(value);
    }
    return text;
}

std::string
DifferencesText(pdfsettings::Sequence<pdfsettings::Difference> const& differences, bool color) {
    std::string text;
    for (auto const& [path, before, after] : differences) {
        std::string const name = VisibleText(path);
        if (!after) {
            text +=
                fmt::format("{} {} {}\n", Colored("-", kRed, color), name, OneLine(path, *before));
        } else if (!before) {
            text +=
                fmt::format("{} {} {}\n", Colored("+", kGreen, color), name, OneLine(path, *after));
        } else {
            text += fmt::format(
                "{} {} {} -> {}\n",
                Colored("~", kYellow, color),
                name,
                OneLine(path, *before),
                OneLine(path, *after));
        }
    }
    return text;
}

} // namespace joboptions
