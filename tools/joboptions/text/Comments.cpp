#include "tools/joboptions/text/Comments.h"

#include <string_view>

namespace joboptions {

namespace {

using pdfsettings::Document;

// Where the settings end and what is kept whole begins.
std::size_t EndOfSettings(Document const& document) {
    auto const body = document.Body();
    return document.Text().find("setalembicorparams", body ? body->end : 0);
}

bool HasPercent(std::string_view text, std::size_t begin, std::size_t end) {
    return text.substr(begin, end - begin).find('%') != std::string_view::npos;
}

} // namespace

// A percent sign is a comment's anywhere but within a string.
bool HasComments(Document const& document) {
    std::string_view const text =
        std::string_view(document.Text()).substr(0, EndOfSettings(document));
    std::size_t begin = 0;
    for (auto const& entry : document.Entries()) {
        if (text[entry.value.begin] != '(') {
            continue;
        }
        if (HasPercent(text, begin, entry.value.begin)) {
            return true;
        }
        begin = entry.value.end;
    }
    return HasPercent(text, begin, text.size());
}

} // namespace joboptions
