#include "api/POSObjectInterface.h"

#include "runtime/notation/Notation.h"
#include "runtime/objects/Container.h"
#include "runtime/objects/Errors.h"
#include "runtime/objects/Tables.h"
#include "runtime/streams/Streams.h"

#include <cstdio>

namespace bibrt {

namespace {

// A method of a stream of any making, or an error.
template <class Proc>
BIBError* FindStreamMethod(
    Proc& result, BIBPositionableStream const* stream, char const* name, char const* procType) {
    result = FindTypedMethod<Proc>(*stream, name, procType);
    return result ? nullptr : Failure("no such method");
}

// Writes text to stream through the method of its signature, in one piece.
BIBError* WriteText(BIBPositionableStream* stream, String const& text) {
    BIBSimpleStreamWriteProc write = nullptr;
    if (BIBError* const error =
            FindStreamMethod(write, stream, "Write", "BIBSimpleStreamWriteProc")) {
        return error;
    }
    return write(stream, reinterpret_cast<unsigned char const*>(text.data()), text.size());
}

// Writes object behind what text holds already.
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
            // A line end would bring the rest of the header out of the comment.
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

// The message of the thread's last CreateFromText that failed on its text.
constinit thread_local char gFindingText[256];

char const* Describe(std::string_view text, NotationFault const& fault) noexcept {
    NotationPlace const place = PlaceOf(text, fault.fOffset);
    std::snprintf(
        gFindingText,
        sizeof(gFindingText),
        "line %lu, column %lu: %s",
        place.fLine,
        place.fColumn,
        fault.fMessage);
    return gFindingText;
}

// The value, or null with the reason in fault.
POSObject* ReadOrExplain(char const* objectText, char const*& fault) {
    try {
        return ReadNotation(objectText);
    } catch (NotationFault const& found) {
        fault = Describe(objectText, found);
        return nullptr;
    }
}

POSObject* CreateFromText(char const* objectText, char const** errorText) {
    char const* fault = "out of memory";
    POSObject* const value = AtRow<POSObject*>(
        nullptr, [&] { return ReadOrExplain(objectText ? objectText : "", fault); });
    if (!value && errorText) {
        *errorText = fault;
    }
    return value;
}

} // namespace

BIBRT_DEFINE_TABLE(POSObjectStatics, POS_OBJECT_STATICS_ROWS, 4)

} // namespace bibrt
