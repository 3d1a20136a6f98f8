#include "tools/joboptions/text/UnknownKeys.h"

#include "tools/joboptions/text/KnownKeys.h"

#include <fmt/format.h>
#include <utility>

namespace joboptions {

namespace {

using pdfsettings::Document;
using pdfsettings::DocumentEntry;
using pdfsettings::SettingRule;

// The end of a longer path is what counts.
constexpr std::size_t kLongestPath = 1000;

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
            true, fmt::format("{}/{}", parent.fPath, parent.fCount++), parent.fRuleKey + "[]", 0};
    }

    Level Setting(Level const& parent, DocumentEntry const& entry) {
        std::string const key = fDocument.KeyOf(entry);
        auto const below = [&key](std::string const& path) {
            return path.empty() ? key : path + "/" + key;
        };
        Level level{true, below(parent.fPath), below(parent.fRuleKey), 0};
        if (!fKnown.Has(parent.fRuleKey, key)) {
            Report(entry, level.fPath, parent.fRuleKey, key);
        }
        return level;
    }

    void Report(
        DocumentEntry const& entry,
        std::string const& path,
        std::string const& ruleParent,
        std::string const& key) {
        std::string const hint =
            fFound.size() < kMostHints ? fKnown.Hint(ruleParent, key) : std::string();
        fFound.push_back(MakeDiagnostic(
            fDocument,
            pdfsettings::Severity::kWarning,
            "unknown-key",
            entry.key,
            path.size() <= kLongestPath ? path : "..." + path.substr(path.size() - kLongestPath),
            kUnknownKeyText + hint));
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
