#include "tools/joboptions/Comments.h"

#include <string_view>

namespace joboptions {

namespace {

using pdfsettings::Document;

// Where the settings end and what is kept whole begins.
std::size_t EndOfSettings(Document const& document) {
    auto const body = document.Body();
    return document.Text().find("setalembicorparams", body ? body->end : 0);
}

} // namespace

// A percent sign is a comment's anywhere but within a string.
bool HasComments(Document const& document) {
    std::string_view const text =
        std::string_view(document.Text()).substr(0, EndOfSettings(document));
    std::size_t begin = 0;
    for (auto const& entry : document.Entries()) {
        if (text[entry.value.begin] == '(') {
            if (text.substr(begin, entry.value.begin - begin).find('%') != text.npos) {
                return true;
            }
            begin = entry.value.end;
        }
    }
    return text.substr(begin).find('%') != text.npos;
}

} // namespace joboptions
