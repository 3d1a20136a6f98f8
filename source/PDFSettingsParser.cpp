#include "source/PDFSettingsParser.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "bib/BIBMemoryBuffer.h"
#include "bib/POSBinData.h"
#include "platform/StackRoom.h"
#include "source/JoboptionsReader.h"

using namespace JoboptionsParserUtils; // NOLINT(google-build-using-namespace)

using BIB_T_NMT::CBIBMemory;
using BIB_T_NMT::CBIBPositionableStream;
using BIB_T_NMT::CPOSDict;

namespace PDFSettingsImpl {

namespace {

// A scanner may step one byte past the terminator and then looks at two bytes.
constexpr unsigned long kTerminatorSize = 4;

constexpr unsigned long kReadChunk = 1024;

constexpr char kKeyword[] = "setalembicorparams";
constexpr unsigned long kKeywordSize = sizeof kKeyword - 1;

// The whole text of a stream, ended by zero bytes.
class StreamText {
public:
    explicit StreamText(CBIBPositionableStream const& stream)
        : fSize(MeasureAndRewind(stream)),
          fBytes(SizeWithTerminator(fSize)) {
        std::memset(fBytes.GetBuffer(), 0, fBytes.GetSize());
        Read(stream);
    }

    char* Begin() noexcept { return fBytes.GetBuffer(); }
    char const* End() const noexcept { return fBytes.GetBuffer() + fSize; }

private:
    static unsigned long MeasureAndRewind(CBIBPositionableStream const& stream) {
        stream.Seek(0, kBIBSeekFromEnd);
        unsigned long const size = stream.Mark();
        stream.Seek(0);
        return size;
    }

    static unsigned long SizeWithTerminator(unsigned long size) {
        if (size > std::numeric_limits<unsigned long>::max() - kTerminatorSize) {
            CBIBMemory::ThrowMemError();
        }
        return size + kTerminatorSize;
    }

    // A short read ends it. A stream is never asked for more than it measured, nor for nothing.
    void Read(CBIBPositionableStream const& stream) {
        unsigned long bytesRead = kReadChunk;
        for (unsigned long offset = 0; bytesRead >= kReadChunk && offset < fSize;
             offset += kReadChunk) {
            unsigned long const wanted = std::min(kReadChunk, fSize - offset);
            bytesRead = stream.Read(static_cast<void*>(Begin() + offset), wanted);
        }
    }

    unsigned long fSize; // without the terminator
    BIB_T_NMT::TBIBMemoryBuffer<char, CBIBMemory> fBytes;
};

// Finds the opening of the settings and gives the place behind it; null for a text without any,
// which must then be blank. The search knows nothing of comments, so an opening inside a comment
// before the settings makes the text invalid.
char* FindSettings(StreamText& text) {
    char* const open = std::strstr(text.Begin(), "<<");
    if (open != text.Begin()) {
        char* start = text.Begin();
        SkipWhiteSpace(&start);
        bool const isBlank = open != nullptr ? start == open : start >= text.End();
        if (!isBlank) {
            ThrowInvalidFile();
        }
    }
    return open != nullptr ? open + 2 : nullptr;
}

void ReadEntries(char** cursor, CPOSDict const& settings) {
    ProgressGuard guard;
    // The first look comes before any skip: blanks behind the opening make the loop run once.
    while (**cursor != '\0' && !StandsOn(*cursor, ">>")) {
        ReadEntry(cursor, settings);
        guard.Check(*cursor);
    }
}

void ReadKeyword(char** cursor) {
    if (**cursor == '\0') {
        ThrowInvalidFile();
    }
    *cursor += 2;
    SkipWhiteSpace(cursor);
    if (!StandsOn(*cursor, kKeyword)) {
        ThrowInvalidFile();
    }
    *cursor += kKeywordSize;
    SkipWhiteSpace(cursor);
}

void KeepTail(char const* tail, char const* end, CPOSDict const& settings) {
    if (tail < end) {
        settings.Put(kAlembicorData, MakeBinData(kAlembicorData, tail, end));
    }
}

} // namespace

PDFSettingsParser::PDFSettingsParser(CBIBPositionableStream const& stream)
    : fSettings(Joboptions_To_CPOSDict(stream)),
      fJoboptions(stream) {}

CPOSDict PDFSettingsParser::Joboptions_To_CPOSDict(CBIBPositionableStream const& stream) {
    platform::StackWatch const watch;
    CPOSDict settings;
    StreamText text(stream);
    if (*text.Begin() == '\0') {
        return settings;
    }
    char* cursor = FindSettings(text);
    if (cursor == nullptr) {
        return settings;
    }
    ReadEntries(&cursor, settings);
    ReadKeyword(&cursor);
    KeepTail(cursor, text.End(), settings);
    return settings;
}

} // namespace PDFSettingsImpl
