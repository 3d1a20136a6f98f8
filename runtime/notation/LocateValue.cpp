// Where in a text in the object notation a path leads.
#include "api/BIBRuntime.h"

#include "runtime/notation/NotationScanner.h"
#include "runtime/objects/Boundary.h"
#include "runtime/schema/SchemaText.h"

namespace bibrt {

namespace {

constexpr std::size_t kNone = std::size_t(-1);

// A collection that is open. Offsets are in the path: where the steps that led into the collection
// end (kNone: they are no part of it), where those end that lead to the value that comes next, and
// where those ended that led to a value at last.
struct OpenPlace {
    bool fIsDict;
    std::size_t fPathOffset;
    std::size_t fNextOffset = kNone;
    std::size_t fLastMatch = kNone;
    std::size_t fCount = 0;
    bool fIsValueNext = false; // in a dictionary: a key has been read
};

// Follows a path through the tokens of a text.
class PlaceFinder {
public:
    PlaceFinder(std::string_view text, std::string_view path) noexcept
        : fScanner(text),
          fPath(path) {}

    // The offset in the text, or kNone. Throws NotationFault and std::bad_alloc.
    std::size_t Find();

private:
    bool Take(Token const& token);
    bool TakeKey(Token const& token);
    bool Close(bool isDict);
    std::size_t BeginValue(std::size_t offset);
    std::size_t MatchKey(std::size_t from, std::string_view key) const noexcept;
    std::size_t MatchIndex(std::size_t from, std::size_t index) const;
    std::size_t MatchStep(std::size_t from, std::string_view step) const noexcept;
    void Note(OpenPlace& place, std::size_t match, std::size_t offset) noexcept;

    NotationScanner fScanner;
    std::string_view fPath;
    Vector<OpenPlace> fOpen;
    std::size_t fFound = kNone;
};

std::size_t PlaceFinder::Find() {
    do {
        Token const token = fScanner.Next();
        bool const isKey = !fOpen.empty() && fOpen.back().fIsDict && !fOpen.back().fIsValueNext;
        if (!(isKey ? TakeKey(token) : Take(token))) {
            return kNone;
        }
    } while (!fOpen.empty());
    return fScanner.Next().fKind == TokenKind::kEnd ? fFound : kNone;
}

// Takes what stands in the place of a value. False when nothing can stand there.
bool PlaceFinder::Take(Token const& token) {
    switch (token.fKind) {
    case TokenKind::kWord:
    case TokenKind::kText:
        BeginValue(token.fOffset);
        return true;
    case TokenKind::kOpenDict:
    case TokenKind::kOpenArray:
        fOpen.push_back({token.fKind == TokenKind::kOpenDict, BeginValue(token.fOffset)});
        return true;
    case TokenKind::kCloseArray:
        return Close(/*isDict=*/false);
    case TokenKind::kCloseDict:
    case TokenKind::kEnd:
        break;
    }
    return false;
}

bool PlaceFinder::TakeKey(Token const& token) {
    if (token.fKind == TokenKind::kCloseDict) {
        return Close(/*isDict=*/true);
    }
    OpenPlace& place = fOpen.back();
    place.fIsValueNext = true;
    Note(place, MatchKey(place.fPathOffset, token.fText), token.fOffset);
    return token.fKind == TokenKind::kWord || token.fKind == TokenKind::kText;
}

bool PlaceFinder::Close(bool isDict) {
    if (fOpen.empty() || fOpen.back().fIsDict != isDict || fOpen.back().fIsValueNext) {
        return false;
    }
    fOpen.pop_back();
    return true;
}

// The offset in the path behind the steps to the value that begins at offset.
std::size_t PlaceFinder::BeginValue(std::size_t offset) {
    if (fOpen.empty()) {
        fFound = fPath.empty() ? offset : kNone;
        return 0;
    }
    OpenPlace& place = fOpen.back();
    if (!place.fIsDict) {
        Note(place, MatchIndex(place.fPathOffset, place.fCount++), offset);
    }
    place.fIsValueNext = false;
    return place.fNextOffset;
}

// Takes note of the next value, whose steps end at match and whose place is offset. A key that
// stands there again takes the place of the former one and of all that lay in it.
void PlaceFinder::Note(OpenPlace& place, std::size_t match, std::size_t offset) noexcept {
    place.fNextOffset = match;
    if (match == kNone) {
        return;
    }
    if (match == place.fLastMatch) {
        fFound = kNone;
    }
    place.fLastMatch = match;
    fFound = match == fPath.size() ? offset : fFound;
}

// Where the step to key ends that begins at from; kNone when there is another.
std::size_t PlaceFinder::MatchKey(std::size_t from, std::string_view key) const noexcept {
    return MatchStep(from, ShownKey(key));
}

std::size_t PlaceFinder::MatchIndex(std::size_t from, std::size_t index) const {
    String step;
    AppendIndexStep(step, index);
    return MatchStep(from, step);
}

std::size_t PlaceFinder::MatchStep(std::size_t from, std::string_view step) const noexcept {
    if (from == kNone || from == fPath.size() || (from > 0 && fPath[from] != '/')) {
        return kNone;
    }
    std::size_t const start = from + (from > 0 ? 1 : 0);
    std::string_view const rest = fPath.substr(start);
    bool const isStep = step.size() <= rest.size() &&
                        std::equal(step.begin(), step.end(), rest.begin(), [](char c, char shown) {
                            return PathByte(c) == PathByte(shown);
                        });
    bool const isWhole = isStep && (step.size() == rest.size() || rest[step.size()] == '/');
    return isWhole ? start + step.size() : kNone;
}

// The offset in text of what path leads to, or kNone.
std::size_t FindOffset(std::string_view text, std::string_view path) {
    try {
        return PlaceFinder(text, path).Find();
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
