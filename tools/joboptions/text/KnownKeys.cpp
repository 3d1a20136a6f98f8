#include "tools/joboptions/text/KnownKeys.h"

#include "pdfsettings/Path.h"
#include "tools/joboptions/text/Nearest.h"

namespace joboptions {

KnownKeys::KnownKeys(std::vector<pdfsettings::SettingRule> const& rules) {
    for (auto const& rule : rules) {
        Add(rule.key);
    }
}

bool KnownKeys::Has(std::string const& parent, std::string const& key) const {
    auto const names = fNames.find(parent);
    return names == fNames.end() || names->second.fAll.contains(key);
}

std::string KnownKeys::Hint(std::string const& parent, std::string const& key) const {
    auto const names = fNames.find(parent);
    return names == fNames.end() ? std::string() : MeantText(Nearest(key, names->second.fInOrder));
}

bool KnownKeys::HasAnyIn(std::string const& parent) const {
    return fNames.contains(parent) || IsBegun(parent + "/") || IsBegun(parent + "[");
}

std::optional<std::string> KnownKeys::Warning(std::string const& path) const {
    std::string parent;
    std::string_view rest = path;
    for (;;) {
        std::string const part(pdfsettings::FirstPart(rest));
        bool const isPosition =
            !part.empty() && part.find_first_not_of("0123456789") == std::string::npos;
        if (!isPosition && !Has(parent, part)) {
            return kUnknownKeyText + Hint(parent, part);
        }
        if (part.size() == rest.size()) {
            return std::nullopt;
        }
        rest.remove_prefix(part.size() + 1);
        parent += isPosition ? "[]" : (parent.empty() ? "" : "/") + part;
    }
}

void KnownKeys::Add(std::string const& key) {
    std::size_t const slash = key.rfind('/');
    std::string const parent = slash == std::string::npos ? std::string() : key.substr(0, slash);
    std::string const name = slash == std::string::npos ? key : key.substr(slash + 1);
    if (name.find('[') == std::string::npos) {
        fNames[parent].fInOrder.push_back(name);
        fNames[parent].fAll.insert(name);
    }
}

bool KnownKeys::IsBegun(std::string const& prefix) const {
    auto const found = fNames.lower_bound(prefix);
    return found != fNames.end() && found->first.starts_with(prefix);
}

} // namespace joboptions
