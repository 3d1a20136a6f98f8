// The writer of job options text: one probe for each kind of value, the counterpart of
// JoboptionsReader.
//
// A probe returns true if it has written the value and its line end, and false if the value has
// another type or could not be written; what it has written so far stays in the stream. A level is
// the number of dictionaries and arrays around a value. A probe that recurses throws
// NestingException if the stack has no room, and for more than 5,000 levels; otherwise only an
// exception from making an empty stream leaves a probe. REQUIRES: a platform::StackWatch lives on
// the thread.
//
// Which failures are swallowed: a probe catches every other exception, so an unsupported type, a
// failed write and a failed allocation look alike. GetValue then tries the other probes and throws;
// the enclosing array or dictionary catches that and fails in turn, up to the settings. Each
// dictionary that fails replaces the stream with an empty one, so no part of the settings remains.
// The result is not an error but a text without settings: an empty text if the settings have their
// own tail, which reads as settings without entries; otherwise the default tail alone, which every
// reader rejects. One failure can go unnoticed: if a boolean cannot be written but the next write
// succeeds, the boolean becomes a name. Not swallowed are nesting that is too deep, which becomes
// the memory error, and failures in making the stream, writing the tail, and moving the stream to
// its start.
#include "source/PDFSettingsParser.h"

#include "bib/BIBMemory.h"
#include "format/NumberText.h"
#include "platform/StackRoom.h"
#include "source/PDFSettingsError.h"

#include <cstring>

using BIB_T_NMT::CBIBMemory;
using BIB_T_NMT::CBIBPositionableStream;
using BIB_T_NMT::CPOSArray;
using BIB_T_NMT::CPOSBinData;
using BIB_T_NMT::CPOSDict;
using BIB_T_NMT::CPOSNumber;
using BIB_T_NMT::CPOSObject;
using BIB_T_NMT::CPOSString;

namespace POSObjectParserUtils {

namespace {

// The indentation of one level of nesting.
constexpr char kLevelIndentStr[] = "  ";

// Thrown for a value that is nested too deeply. Never leaves the writer.
class NestingException : public BIB_T_NMT::CBIBVirtualClientBase {};

constexpr char kLineEnd[] = "\r\n";
constexpr unsigned long kLineEndSize = sizeof kLineEnd - 1;

// Indentation takes memory and time quadratic in the levels. On a large stack, a value that
// contains itself would otherwise fill the memory.
constexpr unsigned long kDeepestLevel = 5000;

// The result of write, or false if it throws.
template <class Write>
bool Probe(Write write) {
    try {
        return write();
    } catch (...) {
        return false;
    }
}

// Combines short pieces, so that the stream gets one write instead of many. Larger pieces are
// written directly. REQUIRES: Flush() is called at the end.
class Pieces {
public:
    explicit Pieces(CBIBPositionableStream const& stream) noexcept : fStream(stream) {}
    Pieces(Pieces const&) = delete;
    Pieces& operator=(Pieces const&) = delete;
    ~Pieces() = default;

    void Add(void const* bytes, unsigned long size) {
        if (size > sizeof fBytes - fSize) {
            Flush();
        }
        if (size > sizeof fBytes) {
            fStream.Write(bytes, size);
            return;
        }
        std::memcpy(fBytes + fSize, bytes, size);
        fSize += size;
    }

    void Add(char const* text) { Add(text, std::strlen(text)); }

    void AddIndents(unsigned long count) {
        for (unsigned long indent = 0; indent < count; ++indent) {
            Add(kLevelIndentStr, sizeof kLevelIndentStr - 1);
        }
    }

    void Flush() {
        if (fSize > 0) {
            fStream.Write(static_cast<void const*>(fBytes), fSize);
            fSize = 0;
        }
    }

private:
    CBIBPositionableStream const& fStream;
    unsigned long fSize = 0;
    char fBytes[256];
};

// The functions below are not inlined, to keep their objects out of the stack frames of nested
// values.

// The bytes are written unchanged: any escapes in them are part of the text.
[[gnu::noinline]] bool WriteBinData(
    char const* typeName,
    char const* opening,
    char const* closing,
    CPOSObject const& value,
    CBIBPositionableStream& stream) {
    CPOSBinData const data(value, /*quiet=*/true);
    if (!data.IsValid() || std::strcmp(data.GetTypeName(), typeName) != 0) {
        return false;
    }
    Pieces line(stream);
    line.Add(opening);
    line.Add(data.GetBinData(), data.GetSize());
    line.Add(closing);
    line.Add(kLineEnd);
    line.Flush();
    return true;
}

// Writes a number as formatted by print, which has the contract of std::to_chars, in a buffer of
// bufferSize bytes. Returns false if the buffer is too small.
template <class Print>
bool WriteThrough(
    unsigned long bufferSize,
    double number,
    CBIBPositionableStream const& stream,
    Print const& print) {
    BIB_T_NMT::TBIBMemoryBuffer<char, CBIBMemory> buffer(bufferSize);
    char* const begin = buffer.GetBuffer();
    std::to_chars_result const result = print(begin, begin + bufferSize - kLineEndSize, number);
    if (result.ec != std::errc()) {
        return false;
    }
    std::memcpy(result.ptr, kLineEnd, kLineEndSize);
    auto const size = static_cast<unsigned long>(result.ptr + kLineEndSize - begin);
    stream.Write(static_cast<void const*>(begin), size);
    return true;
}

// Returns false if the value is not a number. Only extremely long numbers need the second buffer.
template <class Print>
[[gnu::noinline]] bool
WriteNumber(CPOSObject const& value, CBIBPositionableStream const& stream, Print const& print) {
    constexpr unsigned long kUsualSize = 256;
    constexpr unsigned long kLargestSize = format::kLargestNumber + kLineEndSize;
    CPOSNumber const number(value, /*quiet=*/true);
    if (number.IsValid() && !WriteThrough(kUsualSize, number.Get(), stream, print)) {
        WriteThrough(kLargestSize, number.Get(), stream, print);
    }
    return number.IsValid();
}

[[gnu::noinline]] void WriteName(char const* text, CBIBPositionableStream& stream) {
    Pieces line(stream);
    line.Add("/");
    line.Add(text);
    line.Add(kLineEnd);
    line.Flush();
}

[[gnu::noinline]] void
WriteIndented(char const* text, CBIBPositionableStream& stream, unsigned long level) {
    Pieces line(stream);
    line.AddIndents(level);
    line.Add(text);
    line.Flush();
}

[[gnu::noinline]] void
WriteKey(char const* key, CBIBPositionableStream& stream, unsigned long level) {
    Pieces line(stream);
    line.AddIndents(level);
    line.Add("/");
    line.Add(key);
    line.Add(" ");
    line.Flush();
}

// The line of a boolean; null for another word. It is written at once: after a partial write,
// IsName would append the word again as a name.
char const* BooleanLine(char const* word) noexcept {
    if (std::strcmp(word, "true") == 0) {
        return "true\r\n";
    }
    return std::strcmp(word, "false") == 0 ? "false\r\n" : nullptr;
}

// The number of decimals for the number under key; 0 for an ordinary key.
int DecimalsOf(char const* key) noexcept {
    if (std::strcmp(key, "CompatibilityLevel") == 0) {
        return 1;
    }
    return std::strcmp(key, "SyntheticBoldness") == 0 ? 2 : 0;
}

[[noreturn, gnu::noinline]] void ThrowTooDeep() {
    throw NestingException();
}

class Nesting {
public:
    Nesting() {
        if (!fLevel.HasRoom()) {
            ThrowTooDeep();
        }
    }

private:
    platform::StackLevel fLevel;
};

[[noreturn, gnu::noinline]] void ThrowUnknownType() {
    // sic: hosts compare this text
    throw PDFSettingsImpl::CPDFSettingsError(
        "GetValue for POSObject is unknow type", PDFSettingsImpl::kInternalError);
}

[[gnu::noinline]] void Empty(CBIBPositionableStream& stream) {
    stream = CBIBPositionableStream();
}

} // namespace

// Writes a NUL-terminated string. Throws the stream's error.
void WriteText(char const* text, CBIBPositionableStream& stream) {
    stream.Write(static_cast<void const*>(text), std::strlen(text));
}

// The probes, in the order in which GetValue tries them. IsName tries IsBoolean first. If IsDict
// fails, it replaces stream with a new, empty one.

bool IsBoolean(CPOSObject const& value, CBIBPositionableStream& stream) {
    return Probe([&] {
        CPOSString const word(value, /*quiet=*/true);
        char const* const line = word.IsValid() ? BooleanLine(word.Get()) : nullptr;
        if (line != nullptr) {
            WriteText(line, stream);
        }
        return line != nullptr;
    });
}

bool IsName(CPOSObject const& value, CBIBPositionableStream& stream) {
    return Probe([&] {
        if (IsBoolean(value, stream)) {
            return true;
        }
        CPOSString const word(value, /*quiet=*/true);
        if (!word.IsValid()) {
            return false;
        }
        WriteName(word.Get(), stream);
        return true;
    });
}

bool IsString(CPOSObject const& value, CBIBPositionableStream& stream) {
    return Probe([&] {
        return WriteBinData(
            JoboptionsParserUtils::kJoboptionsStringBinType, "(", ")", value, stream);
    });
}

bool IsUnicodeString(CPOSObject const& value, CBIBPositionableStream& stream) {
    return Probe([&] {
        return WriteBinData(
            JoboptionsParserUtils::kJoboptionsUnicodeStringBinType, "<", ">", value, stream);
    });
}

bool IsNumber(CPOSObject const& value, CBIBPositionableStream& stream) {
    return Probe([&] { return WriteNumber(value, stream, &format::FormatNumber); });
}

// Writes the value of a key with its own number format. Returns false for every other key and for a
// value that is not a number. Throws what writing throws.
bool SpecialKeyFormatting(
    char const* key, CPOSObject const& value, CBIBPositionableStream& stream) {
    int const decimals = DecimalsOf(key);
    return decimals != 0 &&
           WriteNumber(value, stream, [decimals](char* begin, char* end, double number) {
               return format::FormatDecimals(begin, end, number, decimals);
           });
}

// Writes a value of any kind. Throws CPDFSettingsError for a value of an unknown kind, and for one
// that could not be written.
void GetValue(CPOSObject const& value, CBIBPositionableStream& stream, unsigned long level);

void WriteEntry(
    char const* key, CPOSDict const& dict, CBIBPositionableStream& stream, unsigned long level) {
    WriteKey(key, stream, level);
    CPOSObject const value = dict.Get(key, /*quiet=*/false);
    if (!SpecialKeyFormatting(key, value, stream)) {
        GetValue(value, stream, level);
    }
}

void WriteElement(CPOSObject const& value, CBIBPositionableStream& stream, unsigned long level) {
    WriteIndented("", stream, level);
    GetValue(value, stream, level);
}

bool IsArray(CPOSObject const& value, CBIBPositionableStream& stream, unsigned long level) {
    try {
        CPOSArray const array(value, /*quiet=*/true);
        if (!array.IsValid()) {
            return false;
        }
        Nesting const nesting;
        WriteText("[\r\n", stream);
        unsigned long const count = array.Count();
        for (unsigned int index = 0; index < count; ++index) {
            WriteElement(array[index], stream, level + 1);
        }
        WriteIndented("]\r\n", stream, level);
        return true;
    } catch (NestingException const&) {
        throw;
    } catch (...) {
        return false;
    }
}

bool IsDict(CPOSObject const& value, CBIBPositionableStream& stream, unsigned long level) {
    try {
        CPOSDict const dict(value, /*quiet=*/true);
        if (!dict.IsValid()) {
            return false;
        }
        Nesting const nesting;
        WriteText("<<\r\n", stream);
        BIB_T_NMT::CPOSDictIterator const cursor(dict);
        for (cursor.Begin(); !cursor.IsDone(); cursor.Next()) {
            WriteEntry(cursor.CurKey(), dict, stream, level + 1);
        }
        WriteIndented(level == 0 ? ">> setalembicorparams\r\n" : ">>\r\n", stream, level);
        return true;
    } catch (NestingException const&) {
        throw;
    } catch (...) {
        // Part of a dictionary would be read as different settings.
        Empty(stream);
        return false;
    }
}

void GetValue(CPOSObject const& value, CBIBPositionableStream& stream, unsigned long level) {
    if (level > kDeepestLevel) {
        ThrowTooDeep();
    }
    bool const isWritten = IsName(value, stream) || IsString(value, stream) ||
                           IsNumber(value, stream) || IsArray(value, stream, level) ||
                           IsDict(value, stream, level) || IsUnicodeString(value, stream);
    if (!isWritten) {
        ThrowUnknownType();
    }
}

} // namespace POSObjectParserUtils

namespace PDFSettingsImpl {

using BIB_T_NMT::CBIBStringAtom;
using POSObjectParserUtils::IsDict;
using POSObjectParserUtils::WriteText;

namespace {

// The tail after the entries of settings without their own tail.
constexpr char kDefaultTail[] = "<<\r\n>> setpagedevice\r\n";

// Removes a key from a dictionary while it lives; the destructor stores it again.
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

// If an entry cannot be written, no tail follows and the stream stays empty.
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

// If an entry cannot be written, the text is the tail alone, which every reader rejects.
void WriteWithDefaultTail(CPOSDict const& settings, CBIBPositionableStream& stream) {
    IsDict(settings, stream, 0);
    WriteText(kDefaultTail, stream);
    stream.Seek(0);
}

} // namespace

PDFSettingsParser::PDFSettingsParser(CPOSDict const& settings)
    : fSettings(settings),
      fJoboptions(CPOSDict_To_Joboptions(settings)) {}

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
