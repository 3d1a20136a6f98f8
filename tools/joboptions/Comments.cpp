#include "tools/joboptions/Comments.h"

namespace joboptions {

namespace {

// The number of bytes of the string that text begins with. A parenthesis is escaped by one
// backslash, not by two.
std::size_t StringSize(std::string_view text) {
    std::size_t end = text.find(')');
    while (end != std::string_view::npos && text[end - 1] == '\\' && text[end - 2] != '\\') {
        end = text.find(')', end + 1);
    }
    return end == std::string_view::npos ? text.size() : end + 1;
}

} // namespace

bool HasComments(std::string_view text) {
    std::string_view rest = text.substr(0, text.find("setalembicorparams"));
    while (!rest.empty()) {
        std::size_t const next = rest.find_first_of("%(");
        if (next == std::string_view::npos) {
            return false;
        }
        rest.remove_prefix(next);
        if (rest.front() == '%') {
            return true;
        }
        rest.remove_prefix(StringSize(rest));
    }
    return false;
}

} // namespace joboptions
