#include "pdfsettings/Review.h"

#include "document/MakeSequence.h"
#include "host/detail/Patterns.h"
#include "host/detail/Validation.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace pdfsettings {

namespace {

// The maximum number of suggestions for unknown keys. Of a longer path only the end is shown.
constexpr std::size_t kMostHints = 100;
constexpr std::size_t kLongestPath = 1000;

// A dictionary or array on the path to an entry.
struct Level {
    bool fIsNamed = true; // whether the schema has rules for its contents
    std::string fPath;
    std::size_t fCount = 0;
};

// Finds the settings that the schema does not know.
class UnknownKeys {
public:
    UnknownKeys(Document const& document, Schema const& schema, std::span<std::string const> known)
        : fDocument(document),
          fSchema(schema),
          fKnown(known) {}

    std::vector<Finding> Run() {
        for (DocumentEntry const& entry : fDocument.Entries()) {
            fLevels.resize(entry.depth + 1);
            // Nothing is reported about settings inside an unknown one.
            fLevels.push_back(fLevels.back().fIsNamed ? Visit(entry) : Level{false, "", 0});
        }
        return std::move(fFound);
    }

private:
    // Examines an entry. Returns the level for entries nested in it.
    Level Visit(DocumentEntry const& entry) {
        Level& parent = fLevels.back();
        bool const isElement = entry.key.Size() == 0;
        std::string const part =
            isElement ? std::to_string(parent.fCount++) : fDocument.KeyOf(entry);
        Level level{true, parent.fPath.empty() ? part : parent.fPath + "/" + part, 0};
        if (!isElement && fSchema.IsUnknown(level.fPath) && !IsKnown(level.fPath)) {
            Report(entry, level.fPath);
        }
        level.fIsNamed = fSchema.HasRulesIn(level.fPath);
        return level;
    }

    bool IsKnown(std::string_view path) const {
        return std::ranges::any_of(fKnown, [&](std::string const& pattern) {
            return detail::MatchesAsWritten(pattern, path);
        });
    }

    void Report(DocumentEntry const& entry, std::string const& path) {
        std::string const meant =
            fFound.size() < kMostHints ? fSchema.Suggest(path) : std::string();
        fFound.push_back(detail::MakeFinding(
            fDocument,
            Severity::kWarning,
            "unknown-key",
            entry.key,
            path.size() <= kLongestPath ? path : "..." + path.substr(path.size() - kLongestPath),
            "the schema has no such setting" +
                (meant.empty() ? "" : "; did you mean " + meant + "?")));
    }

    Document const& fDocument;
    Schema const& fSchema;
    std::span<std::string const> fKnown;
    std::vector<Level> fLevels{1};
    std::vector<Finding> fFound;
};

void Append(std::vector<Finding>& all, std::vector<Finding> more) {
    std::ranges::move(more, std::back_inserter(all));
}

std::vector<Finding>
StrictFindings(Document const& document, Schema const& schema, std::span<std::string const> known) {
    if (document.Body() || document.WhyRefused() != Refusal::kNone ||
        !document.Findings().empty()) {
        return UnknownKeys(document, schema, known).Run();
    }
    return {detail::MakeFinding(
        document,
        Severity::kWarning,
        "empty",
        {document.Text().size(), document.Text().size()},
        "",
        "there are no settings in this file: expected << … >> setalembicorparams")};
}

} // namespace

Document OpenDocument(FilePath const& file) {
    return Document(ReadFile(file));
}

Sequence<ExplainedSetting> Explain(Settings const& settings) {
    Schema const& schema = settings.Rules();
    std::vector<ExplainedSetting> explained;
    auto const add = [&](Rule const& rule) {
        if (rule.Path().find("/*") != std::string::npos) {
            return;
        }
        Value const* const stored = settings.Values().Find(rule.Path());
        Value const* const value = stored != nullptr ? stored : rule.Default();
        bool const isChanged =
            stored != nullptr && (rule.Default() == nullptr || !(*stored == *rule.Default()));
        explained.push_back(
            {rule,
             value == nullptr ? std::nullopt : std::optional(*value),
             stored != nullptr,
             isChanged});
    };
    for (std::string const& group : schema.Groups()) {
        std::ranges::for_each(schema.RulesOf(group), add);
    }
    for (Rule const& rule : schema.Rules()) {
        if (rule.Group().empty()) {
            add(rule);
        }
    }
    return detail::MakeSequence::From(std::move(explained));
}

Findings Review(Document const& document, Schema const& schema, ReviewOptions const& options) {
    std::vector<Finding> all(document.Findings().begin(), document.Findings().end());
    if (document.WhyRefused() == Refusal::kNone) {
        Append(all, detail::WithHints(detail::Validate(document, schema), document, schema));
        Append(all, detail::Warnings(document, schema));
        Append(all, detail::WritingFindings(document));
        if (options.isStrict) {
            Append(all, StrictFindings(document, schema, options.knownKeys));
        }
        std::erase_if(all, [&](Finding const& finding) {
            return std::ranges::find(options.ignoredIds, finding.Id()) != options.ignoredIds.end();
        });
        std::ranges::stable_sort(
            all, {}, [](Finding const& finding) { return finding.Bytes()->begin; });
    }
    return detail::MakeSequence::From(std::move(all));
}

} // namespace pdfsettings
