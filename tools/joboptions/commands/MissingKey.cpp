#include "tools/joboptions/commands/MissingKey.h"

#include "pdfsettings/Path.h"
#include "tools/joboptions/text/Nearest.h"
#include "tools/joboptions/text/Utf8.h"

#include <vector>

namespace joboptions {

using pdfsettings::Dictionary;

namespace {

std::string NearestKey(Dictionary const& values, std::string const& key) {
    std::vector<std::string> keys;
    for (std::size_t place = 0; place < values.Size(); ++place) {
        bool const isSetting = values.KeyAt(place) != pdfsettings::kTailKey;
        keys.push_back(isSetting ? values.KeyAt(place) : "");
    }
    return Nearest(key, keys);
}

// The path that is meant: beside the one that is missing, or at the top, as keys stand in files
// with a slash before them.
std::string KeyMeant(Dictionary const& settings, std::string const& key) {
    std::size_t const slash = key.rfind('/');
    if (slash == std::string::npos || slash == 0) {
        return NearestKey(settings, key);
    }
    auto const* const parent = pdfsettings::Find(settings, key.substr(0, slash));
    auto const* const values = parent == nullptr ? nullptr : parent->If<Dictionary>();
    std::string const nearest =
        values == nullptr ? std::string() : NearestKey(*values, key.substr(slash + 1));
    return nearest.empty() ? nearest : key.substr(0, slash + 1) + nearest;
}

} // namespace

std::string MissingKeyText(Dictionary const& settings, std::string const& key) {
    return "no such key: " + VisibleText(key) + MeantText(KeyMeant(settings, key));
}

} // namespace joboptions
