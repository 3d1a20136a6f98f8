// The scanner of job options text: one probe for each kind of value.
//
// All functions use a cursor into a text that ends in four zero bytes. They look for no other end:
// a zero byte ends every search, and a scanner that has stepped over one continues after it. A
// probe returns true if it has stored the value and moved the cursor past it, and false if it has
// done neither. Every function may throw CBIBError (the memory error, the runtime's errors). Those
// that read keys or values throw PDFSettingsParserException for an entry that cannot be read; the
// cursor is then at or inside that entry.
#include "source/PDFSettingsParser.h"

#include "bib/BIBMemory.h"
#include "format/NumberText.h"
#include "format/Tokens.h"
#include "platform/StackRoom.h"
#include "source/PDFSettingsError.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>
#include <utility>

using BIB_T_NMT::CBIBMemory;
using BIB_T_NMT::CBIBPositionableStream;
using BIB_T_NMT::CPOSArray;
using BIB_T_NMT::CPOSBinData;
using BIB_T_NMT::CPOSDict;
using BIB_T_NMT::CPOSNumber;
using BIB_T_NMT::CPOSObject;
using BIB_T_NMT::CPOSString;
using PDFSettingsImpl::CPDFSettingsError;

namespace JoboptionsParserUtils {

namespace {

// Thrown for an entry that cannot be read. Never leaves the reader.
class PDFSettingsParserException : public BIB_T_NMT::CBIBVirtualClientBase {};

constexpr std::string_view kBooleans[] = {"true", "false"};

// The results of earlier searches in the text that this thread reads; null while no
// RememberedSearches lives.
thread_local format::FarSearches* gSearches = nullptr;

// Makes reading linear in the size of the text: while it lives, a search for a distant end is made
// only once on the current thread. Such objects nest. Without one, every search is repeated.
// REQUIRES: the text does not change while the object lives.
class RememberedSearches {
public:
    RememberedSearches() noexcept : fOuter(std::exchange(gSearches, &fSearches)) {}
    ~RememberedSearches() { gSearches = fOuter; }
    RememberedSearches(RememberedSearches const&) = delete;
    RememberedSearches& operator=(RememberedSearches const&) = delete;

private:
    format::FarSearches fSearches;
    format::FarSearches* fOuter;
};

// The end of the name or key that begins at first. The first byte belongs to it, whatever it is.
char* EndOfName(char* first) noexcept {
    char* end = first + 1;
    while (!format::kNameEnds.Has(*end)) {
        ++end;
    }
    return end;
}

// The name from first to end. Throws PDFSettingsParserException for one that is too long. Never
// inlined, to keep its buffer out of the stack frames of nested values.
[[gnu::noinline]] CPOSString MakeName(char const* first, char const* end) {
    auto const size = static_cast<unsigned long>(end - first);
    if (size > format::kMaxNameSize) {
        throw PDFSettingsParserException();
    }
    char text[format::kMaxNameSize + 1];
    std::memcpy(text, first, size);
    text[size] = '\0';
    return CPOSString(text);
}

bool IsByteAt(char const* cursor, char byte) noexcept {
    return *cursor == byte;
}

// Returns end. A value without an end counts as longer than the memory: throws the memory error.
template <class T>
T* RequireEnd(T* end) {
    if (end == nullptr) {
        CBIBMemory::ThrowMemError();
    }
    return end;
}

} // namespace

void ThrowInvalidFile() {
    throw CPDFSettingsError(
        "Joboptions_To_CPOSDict joboptions file is invalid", PDFSettingsImpl::kInvalidFile);
}

// Whether the text at cursor begins with literal.
bool IsAt(char const* cursor, char const* literal) noexcept {
    while (*literal != '\0' && *literal == *cursor) {
        ++literal;
        ++cursor;
    }
    return *literal == '\0';
}

CPOSBinData MakeBinData(char const* typeName, char const* begin, char const* end) {
    return CPOSBinData(
        typeName,
        reinterpret_cast<unsigned char const*>(begin),
        static_cast<unsigned long>(end - begin));
}

// A dictionary or an array that is being read, or the settings themselves: one level of nesting,
// and a check of the loop over its elements. One class for both checks, since every object takes
// stack at each level.
class OpenCollection {
public:
    // Throws the memory error if the stack has no room for the level.
    OpenCollection() {
        if (!fLevel.HasRoom()) {
            CBIBMemory::ThrowMemError();
        }
    }

    // Call at the end of each iteration. An iteration that does not move the cursor would repeat
    // forever: throws as ThrowInvalidFile().
    void CheckProgress(char const* cursor) {
        if (cursor == fLast) {
            ThrowInvalidFile();
        }
        fLast = cursor;
    }

private:
    platform::StackLevel fLevel;
    char const* fLast = nullptr;
};

// Moves the cursor over blanks, line ends and comments. A comment ends at its line end, or at the
// end of the text.
void SkipWhiteSpace(char** cursor) {
    for (;;) {
        if (format::kBlanks.Has(**cursor)) {
            ++*cursor;
        } else if (IsByteAt(*cursor, '%')) {
            *cursor += std::strcspn(*cursor, "\r\n");
        } else {
            return;
        }
    }
}

// The next key, without its slash. Skips everything before it, whatever it is.
CPOSString GetKey(char** cursor) {
    SkipWhiteSpace(cursor);
    char* const slash = IsByteAt(*cursor, '/') ? *cursor : std::strchr(*cursor, '/');
    if (slash == nullptr) {
        throw PDFSettingsParserException();
    }
    char* const end = EndOfName(slash + 1);
    CPOSString key = MakeName(slash + 1, end);
    *cursor = end;
    return key;
}

// The next value. Throws CPDFSettingsError for a value of an unknown kind.
CPOSObject GetValue(char** cursor);

// Reads the next entry into dict, and skips the white space after it.
//
// Entries get lost without an error, in four ways. (1) Stray tokens: GetKey skips everything up to
// the next "/". That includes a ">>" after a stray token, so the dictionary does not end there. If
// there is no further "/", the text is rejected. (2) A key without a value: the next key becomes
// its value, a name, and what follows that key is stray. In "/A /B 1", A is the name B, and there
// is no key B. If no value can begin at the next token, such as ">>", the text is rejected. (3) A
// value that cannot be read, a string without ")" or a name of more than 255 bytes: the entry is
// dropped, with all arrays around the value, and the next key is searched from the cursor, even
// inside the string. A key of more than 255 bytes stops the cursor, so the text is rejected. (4) An
// empty dictionary: IsDict reads an entry before it tests for ">>", so the dictionary takes the
// next keys of the enclosing dictionary and its ">>". It stays empty only if no "/" follows in the
// text.
void ReadEntry(char** cursor, CPOSDict const& dict) {
    try {
        CPOSString const key = GetKey(cursor);
        dict.Put(key.Get(), GetValue(cursor));
    } catch (PDFSettingsParserException const&) {
        // The entry is lost. The next key is searched from the cursor, even inside this entry.
    }
    SkipWhiteSpace(cursor);
}

// The probes, in the order in which GetValue tries them.

bool IsName(char** cursor, CPOSObject* value) {
    if (!IsByteAt(*cursor, '/')) {
        return false;
    }
    ++*cursor;
    char* const end = EndOfName(*cursor);
    *value = MakeName(*cursor, end);
    *cursor = end;
    return true;
}

bool IsString(char** cursor, CPOSObject* value) {
    if (!IsByteAt(*cursor, '(')) {
        return false;
    }
    ++*cursor;
    char const* const end = format::EndOfString(*cursor, gSearches);
    if (end == nullptr) {
        throw PDFSettingsParserException();
    }
    *value = MakeBinData(kJoboptionsStringBinType, *cursor, end);
    *cursor += end + 1 - *cursor;
    return true;
}

bool IsBoolean(char** cursor, CPOSObject* value) {
    for (std::string_view const word : kBooleans) {
        if (IsAt(*cursor, word.data())) {
            *value = CPOSString(word.data());
            *cursor += word.size();
            return true;
        }
    }
    return false;
}

bool IsNumber(char** cursor, CPOSObject* value) {
    if (!format::kNumberStarts.Has(**cursor)) {
        return false;
    }
    format::NumberToken const token = format::FindNumber(*cursor, gSearches);
    format::ScannedNumber const number =
        format::ScanNumber({*cursor, RequireEnd(token.fEnd)}, token.fHasPoint);
    *value = CPOSNumber(number.fValue);
    // Moves past the number itself; other bytes up to the end of the token stay for the next read.
    // Without any digit the cursor does not move.
    *cursor += number.fSize;
    return true;
}

void AppendElement(char** cursor, CPOSArray const& array) {
    array.Append(GetValue(cursor));
}

bool IsArray(char** cursor, CPOSObject* value) {
    if (!IsByteAt(*cursor, '[')) {
        return false;
    }
    CPOSArray const array;
    OpenCollection open;
    ++*cursor;
    SkipWhiteSpace(cursor);
    // There is no test for the end of the text: the next value fails there.
    while (!IsByteAt(*cursor, ']')) {
        AppendElement(cursor, array);
        SkipWhiteSpace(cursor);
        open.CheckProgress(*cursor);
    }
    ++*cursor;
    *value = array;
    return true;
}

bool IsDict(char** cursor, CPOSObject* value) {
    if (!IsAt(*cursor, "<<")) {
        return false;
    }
    CPOSDict const dict;
    OpenCollection open;
    *cursor += 2;
    SkipWhiteSpace(cursor);
    // The body runs before any test: an empty dictionary takes the next key of the enclosing text.
    // Also, a single ">" in either of the two positions ends the dictionary, whatever the other
    // byte is.
    ReadEntry(cursor, dict);
    while ((*cursor)[0] != '>' && (*cursor)[1] != '>') {
        open.CheckProgress(*cursor);
        ReadEntry(cursor, dict);
    }
    *cursor += 2;
    *value = dict;
    return true;
}

bool IsUnicodeString(char** cursor, CPOSObject* value) {
    if (!IsByteAt(*cursor, '<') || (*cursor)[1] == '<') {
        return false;
    }
    ++*cursor;
    char* const end = RequireEnd(std::strchr(*cursor, '>'));
    *value = MakeBinData(kJoboptionsUnicodeStringBinType, *cursor, end);
    *cursor = end + 1;
    return true;
}

CPOSObject GetValue(char** cursor) {
    CPOSObject value;
    SkipWhiteSpace(cursor);
    bool const isKnown = IsName(cursor, &value) || IsString(cursor, &value) ||
                         IsBoolean(cursor, &value) || IsNumber(cursor, &value) ||
                         IsArray(cursor, &value) || IsDict(cursor, &value) ||
                         IsUnicodeString(cursor, &value);
    // sic: hosts compare this text
    PDFSettingsImpl::ThrowIfFalse(isKnown, "GetValue for joboptions is unknow type");
    return value;
}

} // namespace JoboptionsParserUtils

namespace PDFSettingsImpl {

using namespace JoboptionsParserUtils; // NOLINT(google-build-using-namespace)

namespace {

constexpr unsigned long kReadChunk = 1024;

// The whole text of a stream, followed by zero bytes.
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

    // A short read ends the loop. A stream is never asked for more bytes than it has reported, nor
    // for zero bytes.
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

// Returns the position after the "<<" that opens the settings; null for a text without one, which
// must then be blank. The search ignores comments, so a "<<" in a comment before the settings makes
// the text invalid.
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
    // The first test comes before any white space is skipped: with a blank after "<<", the body
    // runs once even if ">>" follows.
    while (**cursor != '\0' && !IsAt(*cursor, ">>")) {
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
    if (!IsAt(*cursor, format::kKeyword.data())) {
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

} // namespace

PDFSettingsParser::PDFSettingsParser(CBIBPositionableStream const& stream)
    : fSettings(Joboptions_To_CPOSDict(stream)),
      fJoboptions(stream) {}

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

} // namespace PDFSettingsImpl
