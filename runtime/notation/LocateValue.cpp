// Where in a text in the object notation a path leads.
#include "api/BIBRuntime.h"

#include "runtime/notation/Notation.h"
#include "runtime/objects/Errors.h"
#include "runtime/schema/SchemaText.h"

#include <algorithm>

namespace bibrt {

namespace {

constexpr std::size_t kNone = std::size_t(-1);

// Follows a path while a text is read.
class PlaceFinder final : public PlaceListener {
public:
    explicit PlaceFinder(std::string_view path) noexcept : fPath(path) {}

    void OnKey(std::size_t depth, std::string_view key, std::size_t offset) override {
        Note(depth, MatchStep(fLevels[depth - 1].fMatch, ShownKey(key)), offset);
    }

    void OnElement(std::size_t depth, std::size_t index, std::size_t offset) override {
        String step;
        AppendIndexStep(step, index);
        Note(depth, depth == 0 ? 0 : MatchStep(fLevels[depth - 1].fMatch, step), offset);
    }

    // The offset in the text, or kNone.
    std::size_t Found() const noexcept { return fFound; }

private:
    // A key that stands there again takes the place of the former one and of all that lay in it.
    void Note(std::size_t depth, std::size_t match, std::size_t offset) {
        fLevels.resize(depth + 1);
        Level& level = fLevels.back();
        level.fMatch = match;
        if (match == kNone) {
            return;
        }
        if (match == level.fLastMatch) {
            fFound = kNone;
        }
        level.fLastMatch = match;
        fFound = match == fPath.size() ? offset : fFound;
    }

    // Where the step ends that begins at from; kNone when there is another.
    std::size_t MatchStep(std::size_t from, std::string_view step) const noexcept {
        if (from == kNone || from == fPath.size() || (from > 0 && fPath[from] != '/')) {
            return kNone;
        }
        std::size_t const start = from + (from > 0 ? 1 : 0);
        std::string_view const rest = fPath.substr(start);
        bool const isStep =
            step.size() <= rest.size() &&
            std::equal(step.begin(), step.end(), rest.begin(), [](char c, char shown) {
                return PathByte(c) == PathByte(shown);
            });
        bool const isWhole = isStep && (step.size() == rest.size() || rest[step.size()] == '/');
        return isWhole ? start + step.size() : kNone;
    }

    std::string_view fPath;
    // Of each open collection, and of the value that is read: how much of the path led there, and
    // how much of it led to the last value of that level that it led to at all.
    struct Level {
        std::size_t fMatch = kNone;
        std::size_t fLastMatch = kNone;
    };
    Vector<Level> fLevels;
    std::size_t fFound = kNone;
};

// The offset in text of what path leads to, or kNone.
std::size_t FindOffset(std::string_view text, std::string_view path) {
    try {
        PlaceFinder finder(path);
        Unowned<POSObject> const value(ReadNotation(text, &finder));
        return finder.Found();
    } catch (NotationFault const&) {
        return kNone;
    }
}

} // namespace

} // namespace bibrt

int BIBRuntimeLocateValue(
    char const* text, char const* path, unsigned long* line, unsigned long* column) {
    if (!text || !path || !line || !column) {
        return 0;
    }
    std::size_t const offset =
        bibrt::AtRow(bibrt::kNone, [&] { return bibrt::FindOffset(text, path); });
    if (offset == bibrt::kNone) {
        return 0;
    }
    bibrt::NotationPlace const place = bibrt::PlaceOf(text, offset);
    *line = place.fLine;
    *column = place.fColumn;
    return 1;
}
