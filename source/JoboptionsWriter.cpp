// The writer of job options text: one probe for each kind of value, the mirror of JoboptionsReader.
//
// A probe answers true when it has written the value and its line end, and false when the value is
// of another kind or could not be written; what it wrote until then stays in the stream. Levels
// count the dictionaries and arrays around a value. A probe that goes deeper throws
// NestingException when the stack cannot bear it, and behind 5,000 levels; nothing else leaves a
// probe but what making an empty stream may throw. REQUIRES: a platform::StackWatch lives on the
// thread.
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

// Stands for one level of nesting.
constexpr char kLevelIndentStr[] = "  ";

// Says that a value is nested too deep for the stack. Never leaves the writer.
class NestingException : public BIB_T_NMT::CBIBVirtualClientBase {};

constexpr char kLineEnd[] = "\r\n";
constexpr unsigned long kLineEndSize = sizeof kLineEnd - 1;

// Indentation takes memory and time with the square of the levels, so that a large stack alone
// would let values that contain themselves fill the memory.
constexpr unsigned long kDeepestLevel = 5000;

// The answer of write, or false if it throws.
template <class Write>
bool Probe(Write write) {
    try {
        return write();
    } catch (...) {
        return false;
    }
}

// Puts short pieces together, so that the stream has one write where there would be many. What is
// larger goes to the stream as it is. REQUIRES: Flush() before the end.
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

// The functions below are out of line, so that their objects do not stand in the frames that a
// nested value is written from.

// The bytes go out as they came in: whatever escapes they hold are the text's own.
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

// Writes a number as print makes it, as std::to_chars does, in a buffer of so many bytes. False
// when that is too small.
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

// False for a value that is no number. Only a number that nobody writes needs the second buffer.
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

// The line of a boolean, null for another word. It is written at once: a word that failed half way
// would be written again as a name, behind what is there already.
char const* BooleanLine(char const* word) noexcept {
    if (std::strcmp(word, "true") == 0) {
        return "true\r\n";
    }
    return std::strcmp(word, "false") == 0 ? "false\r\n" : nullptr;
}

// The number under key gets so many decimals; 0 for an ordinary key.
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

// Writes a NUL-terminated text. Throws the stream's error.
void WriteText(char const* text, CBIBPositionableStream& stream) {
    stream.Write(static_cast<void const*>(text), std::strlen(text));
}

// The probes, in the order in which GetValue tries them. IsName tries IsBoolean first. When IsDict
// fails, it exchanges stream for a new, empty one.

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

// Writes the value of a key whose numbers have a form of their own. False for every other key and
// for a value that is no number. Throws what writing throws.
bool SpecialKeyFormatting(
    char const* key, CPOSObject const& value, CBIBPositionableStream& stream) {
    int const decimals = DecimalsOf(key);
    return decimals != 0 &&
           WriteNumber(value, stream, [decimals](char* begin, char* end, double number) {
               return format::FormatDecimals(begin, end, number, decimals);
           });
}

// Writes the value of any kind. Throws CPDFSettingsError for one of no known kind, and for one
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
        // Half a dictionary would be read back as other settings than these.
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
