#include "pdfsettings/Merge.h"

#include "document/MakeSequence.h"
#include "format/SettingPath.h"
#include "format/Tokens.h"
#include "pdfsettings/Error.h"

#include <string_view>
#include <utility>
#include <vector>

namespace pdfsettings {

namespace {

// Each change reads the text again. With more than so many bytes in all, what is left is reported
// as conflicts.
constexpr std::size_t kMostBytesRead = std::size_t{32} << 20;

// A value that a document has or has not.
using Found = std::optional<Value>;

Found FindIn(Dictionary const& dictionary, std::string const& key) {
    Value const* const value = dictionary.FindKey(key);
    return value == nullptr ? std::nullopt : Found(*value);
}

std::optional<Dictionary> AsDictionary(Found const& found) {
    return found ? found->If<Dictionary>() : std::nullopt;
}

// Dictionaries at one path, whose entries are still to be merged.
struct Level {
    std::string fPrefix;
    Dictionary fBase;
    Dictionary fOurs;
    Dictionary fTheirs;
};

// Merges with an explicit stack of levels, so that deep nesting uses no more stack.
class Merging {
public:
    Merging(Document const& ours, Document const& theirs) : fTheirs(theirs), fResult(ours) {}

    MergedDocument Run(Document const& base) {
        fPending.push_back({"", base.Values(), fResult.Values(), fTheirs.Values()});
        while (!fPending.empty()) {
            Level const level = std::move(fPending.back());
            fPending.pop_back();
            MergeLevel(level);
        }
        MergeTail(base.Tail());
        for (MergeConflict& conflict : fConflicts) {
            conflict.isMarked = AddComments(conflict);
        }
        return {fResult, detail::MakeSequence::From(std::move(fConflicts))};
    }

private:
    void MergeLevel(Level const& level) {
        for (auto const& [key, ours] : level.fOurs) {
            MergeEntry(level, key, ours, FindIn(level.fTheirs, key));
        }
        for (auto const& [key, theirs] : level.fTheirs) {
            if (level.fOurs.FindKey(key) == nullptr) {
                MergeEntry(level, key, std::nullopt, theirs);
            }
        }
    }

    void
    MergeEntry(Level const& level, std::string const& key, Found const& ours, Found const& theirs) {
        Found const base = FindIn(level.fBase, key);
        std::string const path = level.fPrefix + key;
        if (ours == theirs || base == theirs) {
            return;
        }
        if (base == ours && Take(path, theirs.has_value())) {
            return;
        }
        auto const dictionary = AsDictionary(ours);
        auto const other = AsDictionary(theirs);
        if (dictionary && other) {
            fPending.push_back(
                {path + "/", AsDictionary(base).value_or(Dictionary()), *dictionary, *other});
        } else {
            fConflicts.push_back({path, base, ours, theirs});
        }
    }

    // Whether the text may be read once more.
    bool MayRead() {
        fRead += fResult.Text().size();
        return fRead <= kMostBytesRead;
    }

    // Does what they did. False if the text does not allow it.
    bool Take(std::string const& path, bool isThere) {
        if (!MayRead()) {
            return false;
        }
        try {
            fResult = isThere ? fResult.WithCopy(path, fTheirs) : fResult.Without(path);
            return true;
        } catch (Error const&) {
            return false;
        }
    }

    void MergeTail(std::string const& base) {
        std::string const& ours = fResult.Tail();
        std::string const& theirs = fTheirs.Tail();
        if (ours == theirs || base == theirs || (base == ours && TakeTail())) {
            return;
        }
        fConflicts.push_back(
            {std::string(format::kTailKey), TailOf(base), TailOf(ours), TailOf(theirs)});
    }

    static Found TailOf(std::string const& tail) {
        return tail.empty() ? std::nullopt : Found(RawString{tail});
    }

    bool TakeTail() {
        std::string text = fResult.Text();
        if (!text.ends_with(fResult.Tail())) {
            return false;
        }
        text.resize(text.size() - fResult.Tail().size());
        bool const isApart = !text.empty() && format::kBlanks.Has(text.back());
        Document const changed(text + (isApart ? "" : "\n") + fTheirs.Tail());
        return ReplaceBy(changed, fTheirs.Tail());
    }

    // Only by a text that reads back as the same settings.
    bool ReplaceBy(Document const& changed, std::string const& tail) {
        if (changed.WhyRefused() != Refusal::kNone || !(changed.Values() == fResult.Values()) ||
            changed.Tail() != tail) {
            return false;
        }
        fResult = changed;
        return true;
    }

    // Writes both values above the setting, or where it is missing.
    bool AddComments(MergeConflict const& conflict) {
        auto const place = PlaceOf(conflict.path);
        if (!place || !MayRead()) {
            return false;
        }
        std::string const& text = fResult.Text();
        std::size_t const line = text.find_last_of("\r\n", *place - 1) + 1; // 0 if there is none
        std::size_t const first = text.find_first_not_of("\t ", line);
        std::string const indent = text.substr(line, std::min(first, *place) - line);
        std::string const end(format::FirstLineEnd(text));
        std::string comments = first >= *place ? "" : end + indent;
        comments += "% conflict: " + OnOneLine(conflict.path) + end + indent;
        comments += "%   ours:   " + TextOf(conflict.ours, conflict.base) + end + indent;
        comments += "%   theirs: " + TextOf(conflict.theirs, conflict.base) + end + indent;
        std::string const tail = fResult.Tail();
        return ReplaceBy(Document(text.substr(0, *place) + comments + text.substr(*place)), tail);
    }

    // Where a setting is, or the end of the dictionary that it is missing from.
    std::optional<std::size_t> PlaceOf(std::string const& path) const {
        if (DocumentEntry const* const entry = fResult.Find(path)) {
            return entry->key.begin;
        }
        std::string_view const parent = format::ParentPath(path);
        if (!parent.empty()) {
            DocumentEntry const* const entry = fResult.Find(parent);
            return entry == nullptr ? std::nullopt : std::optional(entry->value.end - 2);
        }
        auto const body = fResult.Body();
        return body && path != format::kTailKey ? std::optional(body->end) : std::nullopt;
    }

    static std::string TextOf(Found const& found, Found const& base) {
        return found ? OnOneLine(found->Text()) : base ? "(removed)" : "(none)";
    }

    // As it would be written in a string: a line end would end the comment, and a zero byte the
    // text.
    static std::string OnOneLine(std::string_view text) {
        std::string line;
        for (char const byte : text) {
            switch (byte) {
            case '\n':
                line += "\\n";
                break;
            case '\r':
                line += "\\r";
                break;
            case '\0':
                line += "\\000";
                break;
            default:
                line += byte;
            }
        }
        return line;
    }

    Document fTheirs;
    Document fResult;
    std::size_t fRead = 0;
    std::vector<Level> fPending;
    std::vector<MergeConflict> fConflicts;
};

} // namespace

MergedDocument Merge(Document const& base, Document const& ours, Document const& theirs) {
    for (Document const* const document : {&base, &ours, &theirs}) {
        document->RequireRead();
    }
    return Merging(ours, theirs).Run(base);
}

} // namespace pdfsettings
