// The rows that read and write the object notation, and the search for the position of a path in a
// text.
#include "api/BIBRuntime.h"
#include "api/POSObjectInterface.h"
#include "runtime/notation/Notation.h"
#include "runtime/objects/Container.h"
#include "runtime/objects/Errors.h"
#include "runtime/objects/Tables.h"
#include "runtime/schema/SchemaText.h"
#include "runtime/streams/Streams.h"

#include <algorithm>
#include <cstdio>

namespace bibrt {

namespace {

// Finds a method of a stream, which may be a host's own. Null, or an error if there is none.
template <class Proc>
BIBError* FindStreamMethod(
    Proc& result, BIBPositionableStream const* stream, char const* name, char const* procType) {
    result = FindTypedMethod<Proc>(*stream, name, procType);
    return result ? nullptr : Failure("no such method");
}

// Writes text to stream in one call of the stream's method.
BIBError* WriteText(BIBPositionableStream* stream, String const& text) {
    BIBSimpleStreamWriteProc write = nullptr;
    if (BIBError* const error =
            FindStreamMethod(write, stream, "Write", "BIBSimpleStreamWriteProc")) {
        return error;
    }
    return write(stream, reinterpret_cast<unsigned char const*>(text.data()), text.size());
}

// Appends object to text and writes all of it to stream.
BIBError* DumpBehind(String& text, POSObject* object, BIBPositionableStream* stream) {
    if (!object || !stream) {
        return BadArgument();
    }
    if (!WriteNotation(*object, text)) {
        return Failure("a value that contains itself cannot be written");
    }
    return WriteText(stream, text);
}

BIBError* DebugDump(POSObject* object, BIBPositionableStream* stream) {
    return AtStatusRow([&] {
        String text;
        return DumpBehind(text, object, stream);
    });
}

BIBError*
DebugDumpWithHeader(POSObject* object, BIBPositionableStream* stream, char const* header) {
    return AtStatusRow([&] {
        String text("% ");
        for (char const c : std::string_view(header ? header : "")) {
            // A line end would end the comment.
            text.push_back(c == '\n' || c == '\r' ? ' ' : c);
        }
        text.push_back('\n');
        return DumpBehind(text, object, stream);
    });
}

BIBError* DebugDumpRewind(POSObject* object, BIBPositionableStream* stream) {
    if (BIBError* const error = DebugDump(object, stream)) {
        return error;
    }
    BIBPositionableStreamSeekProc seek = nullptr;
    if (BIBError* const error =
            FindStreamMethod(seek, stream, "Seek", "BIBPositionableStreamSeekProc")) {
        return error;
    }
    return seek(stream, 0, kBIBSeekFromStart);
}

// The error message of the thread's last CreateFromText with an invalid text.
constinit thread_local char gFindingText[256];

char const* Describe(std::string_view text, NotationError const& error) noexcept {
    NotationPlace const place = PlaceOf(text, error.fOffset);
    std::snprintf(
        gFindingText,
        sizeof(gFindingText),
        "line %lu, column %lu: %s",
        place.fLine,
        place.fColumn,
        error.fMessage);
    return gFindingText;
}

// The value, or null with the message in error.
POSObject* ReadOrExplain(char const* objectText, char const*& error) {
    try {
        return ReadNotation(objectText);
    } catch (NotationError const& found) {
        error = Describe(objectText, found);
        return nullptr;
    }
}

POSObject* CreateFromText(char const* objectText, char const** errorText) {
    char const* error = "out of memory";
    POSObject* const value = AtRow<POSObject*>(
        nullptr, [&] { return ReadOrExplain(objectText ? objectText : "", error); });
    if (!value && errorText) {
        *errorText = error;
    }
    return value;
}

constexpr std::size_t kNone = std::size_t(-1);

// Finds the position of a path while a text is read.
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
    // A repeated key replaces the former one and everything inside it.
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

    // The end of the step that begins at from in the path; kNone if it is a different step.
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
    // For each open collection and the current value: the length of the part of the path that leads
    // there, and the same for the last value of this level that the path leads to.
    struct Level {
        std::size_t fMatch = kNone;
        std::size_t fLastMatch = kNone;
    };
    Vector<Level> fLevels;
    std::size_t fFound = kNone;
};

// The offset in text that path leads to, or kNone.
std::size_t FindOffset(std::string_view text, std::string_view path) {
    try {
        PlaceFinder finder(path);
        Unowned<POSObject> const value(ReadNotation(text, &finder));
        return finder.Found();
    } catch (NotationError const&) {
        return kNone;
    }
}

} // namespace

BIBRT_DEFINE_TABLE(POSObjectStatics, POS_OBJECT_STATICS_ROWS, 4)

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
