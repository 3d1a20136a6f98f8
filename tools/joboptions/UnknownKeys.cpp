#include "tools/joboptions/UnknownKeys.h"

#include "tools/joboptions/Nearest.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>

namespace joboptions {

namespace {

using pdfsettings::Document;
using pdfsettings::DocumentEntry;
using pdfsettings::SettingRule;

// The settings that a schema names, by the dictionary or array that they stand in.
class KnownKeys {
public:
    explicit KnownKeys(std::vector<SettingRule> const& rules) {
        for (SettingRule const& rule : rules) {
            Add(rule.key);
        }
    }

    // The names next to one another in a dictionary, in the rule's form of a path; null where the
    // schema names none.
    std::vector<std::string> const* In(std::string const& parent) const {
        auto const found = fNames.find(parent);
        return found == fNames.end() ? nullptr : &found->second;
    }

    // Whether the schema names anything at all in there.
    bool HasAnyIn(std::string const& parent) const {
        return In(parent) != nullptr || IsBegun(parent + "/") || IsBegun(parent + "[");
    }

private:
    void Add(std::string const& key) {
        std::size_t const slash = key.rfind('/');
        std::string const name = slash == std::string::npos ? key : key.substr(slash + 1);
        if (name.find('[') == std::string::npos) {
            fNames[slash == std::string::npos ? std::string() : key.substr(0, slash)].push_back(
                name);
        }
    }

    bool IsBegun(std::string const& prefix) const {
        auto const found = fNames.lower_bound(prefix);
        return found != fNames.end() && found->first.starts_with(prefix);
    }

    std::map<std::string, std::vector<std::string>> fNames;
};

// A dictionary or an array on the way to an entry.
struct Level {
    bool fIsNamed = true; // whether the schema names anything in it
    std::string fPath;    // in the form of findings
    std::string fRuleKey; // in the rule's form
    std::size_t fCount = 0;
};

class Search {
public:
    Search(Document const& document, std::vector<SettingRule> const& rules)
        : fDocument(document),
          fKnown(rules) {}

    std::vector<Diagnostic> Run() {
        for (DocumentEntry const& entry : fDocument.Entries()) {
            fLevels.resize(entry.depth + 1);
            // Nothing is said, and no path is kept, of what lies below an unknown setting.
            fLevels.push_back(fLevels.back().fIsNamed ? Visit(entry) : Level{false, "", "", 0});
        }
        return std::move(fFound);
    }

private:
    // Judges an entry; the level that it opens if it holds others.
    Level Visit(DocumentEntry const& entry) {
        Level& parent = fLevels.back();
        Level level = entry.key.Size() == 0 ? Element(parent) : Setting(parent, entry);
        level.fIsNamed = fKnown.HasAnyIn(level.fRuleKey);
        return level;
    }

    static Level Element(Level& parent) {
        return {
            true, fmt::format("{}[{}]", parent.fPath, parent.fCount++), parent.fRuleKey + "[]", 0};
    }

    Level Setting(Level const& parent, DocumentEntry const& entry) {
        std::string const key = fDocument.KeyOf(entry);
        auto const below = [&key](std::string const& path) {
            return path.empty() ? key : path + "/" + key;
        };
        Level level{true, below(parent.fPath), below(parent.fRuleKey), 0};
        auto const* const names = fKnown.In(parent.fRuleKey);
        if (names != nullptr && std::ranges::find(*names, key) == names->end()) {
            Report(entry, level.fPath, key, *names);
        }
        return level;
    }

    void Report(
        DocumentEntry const& entry,
        std::string const& path,
        std::string const& key,
        std::vector<std::string> const& names) {
        std::string const nearest = fFound.size() < kMostHints ? Nearest(key, names) : "";
        fFound.push_back(MakeDiagnostic(
            fDocument,
            pdfsettings::Severity::kWarning,
            "unknown-key",
            entry.key,
            path,
            nearest.empty()
                ? "the schema has no such setting"
                : fmt::format("the schema has no such setting; did you mean {}?", nearest)));
    }

    Document const& fDocument;
    KnownKeys fKnown;
    std::vector<Level> fLevels{1};
    std::vector<Diagnostic> fFound;
};

} // namespace

std::vector<Diagnostic>
UnknownKeys(Document const& document, std::vector<SettingRule> const& rules) {
    return Search(document, rules).Run();
}

} // namespace joboptions
