#include "source/PDFSettingsParser.h"

#include "bib/BIBMemory.h"
#include "bib/POSScalars.h"
#include "format/Tokens.h"
#include "platform/StackRoom.h"
#include "source/JoboptionsReader.h"
#include "source/JoboptionsWriter.h"

#include <algorithm>
#include <cstring>
#include <limits>

using namespace JoboptionsParserUtils; // NOLINT(google-build-using-namespace)
using BIB_T_NMT::CBIBMemory;
using BIB_T_NMT::CBIBPositionableStream;
using BIB_T_NMT::CBIBStringAtom;
using BIB_T_NMT::CPOSBinData;
using BIB_T_NMT::CPOSDict;
using POSObjectParserUtils::IsDict;
using POSObjectParserUtils::WriteText;

namespace PDFSettingsImpl {

namespace {

constexpr unsigned long kReadChunk = 1024;

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
        if (size > std::numeric_limits<unsigned long>::max() - format::kZerosBehindText) {
            CBIBMemory::ThrowMemError();
        }
        return size + format::kZerosBehindText;
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
    OpenCollection open;
    // The first look comes before any skip: blanks behind the opening make the loop run once.
    while (**cursor != '\0' && !StandsOn(*cursor, ">>")) {
        ReadEntry(cursor, settings);
        open.CheckProgress(*cursor);
    }
}

void ReadKeyword(char** cursor) {
    if (**cursor == '\0') {
        ThrowInvalidFile();
    }
    *cursor += 2;
    SkipWhiteSpace(cursor);
    if (!StandsOn(*cursor, format::kKeyword.data())) {
        ThrowInvalidFile();
    }
    *cursor += format::kKeyword.size();
    SkipWhiteSpace(cursor);
}

void KeepTail(char const* tail, char const* end, CPOSDict const& settings) {
    if (tail < end) {
        settings.Put(kAlembicorData, MakeBinData(kAlembicorData, tail, end));
    }
}

// What stands behind the entries of settings that bring no tail of their own.
constexpr char kDefaultTail[] = "<<\r\n>> setpagedevice\r\n";

// A dictionary without a key for as long as this lives, on every way out.
class WithoutKey {
public:
    // REQUIRES: settings holds value under key; all three outlive this.
    WithoutKey(CPOSDict const& settings, CBIBStringAtom const& key, CPOSBinData const& value)
        : fSettings(settings),
          fKey(key),
          fValue(value) {
        fSettings.Remove(fKey);
    }
    ~WithoutKey() { fSettings.Put(fKey, fValue); }
    WithoutKey(WithoutKey const&) = delete;
    WithoutKey& operator=(WithoutKey const&) = delete;

private:
    CPOSDict const& fSettings;
    CBIBStringAtom const& fKey;
    CPOSBinData const& fValue;
};

// Where an entry cannot be written, no tail follows: the stream stays empty.
void WriteWithOwnTail(CPOSDict const& settings, CBIBPositionableStream& stream) {
    CBIBStringAtom const key(kAlembicorData);
    CPOSBinData const tail(settings.Get(key, /*quiet=*/false), /*quiet=*/false);
    auto const writeEntries = [&] {
        WithoutKey const entries(settings, key, tail);
        return IsDict(settings, stream, 0);
    };
    if (writeEntries()) {
        stream.Write(tail.GetBinData(), tail.GetSize());
        stream.Seek(0);
    }
}

// Where an entry cannot be written, the tail stands alone, and every reader refuses that.
void WriteWithDefaultTail(CPOSDict const& settings, CBIBPositionableStream& stream) {
    IsDict(settings, stream, 0);
    WriteText(kDefaultTail, stream);
    stream.Seek(0);
}

} // namespace

PDFSettingsParser::PDFSettingsParser(CBIBPositionableStream const& stream)
    : fSettings(Joboptions_To_CPOSDict(stream)),
      fJoboptions(stream) {}

PDFSettingsParser::PDFSettingsParser(CPOSDict const& settings)
    : fSettings(settings),
      fJoboptions(CPOSDict_To_Joboptions(settings)) {}

CPOSDict PDFSettingsParser::Joboptions_To_CPOSDict(CBIBPositionableStream const& stream) {
    platform::StackWatch const watch;
    CPOSDict settings;
    StreamText text(stream);
    RememberedSearches const searches;
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

CBIBPositionableStream PDFSettingsParser::CPOSDict_To_Joboptions(CPOSDict const& settings) {
    platform::StackWatch const watch;
    CBIBPositionableStream stream;
    try {
        bool const hasTail = settings.HasKey(kAlembicorData);
        (hasTail ? WriteWithOwnTail : WriteWithDefaultTail)(settings, stream);
    } catch (POSObjectParserUtils::NestingException const&) {
        CBIBMemory::ThrowMemError();
    }
    return stream;
}

} // namespace PDFSettingsImpl
