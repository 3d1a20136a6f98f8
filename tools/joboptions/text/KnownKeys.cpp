#include "tools/joboptions/text/KnownKeys.h"

#include "format/SettingPath.h"
#include "pdfsettings/Path.h"
#include "tools/joboptions/text/Utf8.h"
#include "tools/joboptions/text/ValueText.h"

#include <algorithm>
#include <cctype>
#include <fmt/format.h>
#include <map>
#include <numeric>
#include <optional>
#include <unordered_set>
#include <utility>

namespace joboptions {

namespace {

// Longer words are never compared letter by letter.
constexpr std::size_t kLongestWord = 64;

std::string InSmallLetters(std::string word) {
    std::ranges::transform(word, word.begin(), [](char letter) {
        return static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    });
    return word;
}

// How many letters have to be inserted, removed or replaced to make one word of the other; most
// where it is that or more.
std::size_t Distance(std::string const& from, std::string const& to, std::size_t most) {
    if (std::max(from.size(), to.size()) - std::min(from.size(), to.size()) >= most) {
        return most;
    }
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < to.size(); ++j) {
            std::size_t const exchanged = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({exchanged, diagonal + 1, row[j] + 1});
        }
        if (*std::ranges::min_element(row) >= most) {
            return most;
        }
    }
    return std::min(row.back(), most);
}

} // namespace

std::string Nearest(std::string const& word, std::vector<std::string> const& choices) {
    std::string nearest;
    // Capitals count for nothing, and one letter in four may be wrong.
    std::size_t least = word.size() / 4 + 2;
    std::string const small = InSmallLetters(word);
    for (std::string const& choice : choices) {
        bool const isLong = std::max(word.size(), choice.size()) > kLongestWord;
        std::size_t const distance =
            isLong ? least : Distance(small, InSmallLetters(choice), least);
        if (distance < least && distance < choice.size()) {
            least = distance;
            nearest = choice;
        }
    }
    return nearest;
}

std::string MeantText(std::string const& meant, char const* before) {
    return meant.empty() ? "" : fmt::format("; did you mean {}{}?", before, VisibleText(meant));
}

namespace {

using pdfsettings::Document;
using pdfsettings::DocumentEntry;
using pdfsettings::SettingRule;

constexpr char kUnknownKeyText[] = "the schema has no such setting";

// The settings that a schema names, by the dictionary or array that they stand in, in the rule's
// form of a path: "[]" stands for any element of an array.
class KnownKeys {
public:
    explicit KnownKeys(std::vector<SettingRule> const& rules) {
        for (SettingRule const& rule : rules) {
            Add(rule.key);
        }
    }

    // Whether the schema names a key of a dictionary. Where it names none, all are as good.
    bool Has(std::string const& parent, std::string const& key) const {
        auto const names = fNames.find(parent);
        return names == fNames.end() || names->second.fAll.contains(key);
    }

    // "; did you mean …?" for a key that the schema does not name; empty for no idea.
    std::string Hint(std::string const& parent, std::string const& key) const {
        auto const names = fNames.find(parent);
        bool const hasIdea = names != fNames.end();
        return hasIdea ? MeantText(Nearest(key, names->second.fInOrder)) : std::string();
    }

    // Whether the schema names anything at all in a dictionary or an array.
    bool HasAnyIn(std::string const& parent) const {
        return fNames.contains(parent) || IsBegun(parent + "/") || IsBegun(parent + "[");
    }

    // What there is to say of a path that the schema does not name.
    std::optional<std::string> Warning(std::string const& path) const {
        std::string parent;
        std::string_view rest = path;
        for (;;) {
            std::string const part(pdfsettings::FirstPart(rest));
            bool const isPosition = format::PositionIn(part).has_value();
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

private:
    void Add(std::string const& key) {
        std::size_t const slash = key.rfind('/');
        std::string const parent = slash == std::string::npos ? "" : key.substr(0, slash);
        std::string const name = slash == std::string::npos ? key : key.substr(slash + 1);
        if (name.find('[') == std::string::npos) {
            fNames[parent].fInOrder.push_back(name);
            fNames[parent].fAll.insert(name);
        }
    }

    bool IsBegun(std::string const& prefix) const {
        auto const found = fNames.lower_bound(prefix);
        return found != fNames.end() && found->first.starts_with(prefix);
    }

    // In the schema's order, and to be found among thousands.
    struct Names {
        std::vector<std::string> fInOrder;
        std::unordered_set<std::string> fAll;
    };

    std::map<std::string, Names> fNames;
};

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

    std::vector<PlacedFinding> Run() {
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
        fFound.push_back(MakeFinding(
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
    std::vector<PlacedFinding> fFound;
};

} // namespace

std::vector<PlacedFinding>
UnknownKeys(Document const& document, std::vector<SettingRule> const& rules) {
    return Search(document, rules).Run();
}

std::vector<pdfsettings::Finding>
UnknownPaths(std::vector<SettingRule> const& rules, std::vector<std::string> const& paths) {
    KnownKeys const known(rules);
    std::vector<pdfsettings::Finding> findings;
    for (std::string const& path : paths) {
        if (auto const warning = known.Warning(path)) {
            findings.push_back({path, *warning});
        }
    }
    return findings;
}

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
    auto const* const values = As<Dictionary>(Find(settings, key.substr(0, slash)));
    std::string const nearest =
        values == nullptr ? std::string() : NearestKey(*values, key.substr(slash + 1));
    return nearest.empty() ? nearest : key.substr(0, slash + 1) + nearest;
}

} // namespace

std::string MissingKeyText(Dictionary const& settings, std::string const& key) {
    return "no such key: " + VisibleText(key) + MeantText(KeyMeant(settings, key));
}

} // namespace joboptions
