#include "source/JoboptionsReader.h"

#include "bib/BIBMemory.h"
#include "bib/POSCollections.h"
#include "bib/POSScalars.h"
#include "format/NumberText.h"
#include "format/Tokens.h"
#include "source/PDFSettingsError.h"

#include <cstring>
#include <string_view>
#include <utility>

using BIB_T_NMT::CBIBMemory;
using BIB_T_NMT::CPOSArray;
using BIB_T_NMT::CPOSBinData;
using BIB_T_NMT::CPOSDict;
using BIB_T_NMT::CPOSNumber;
using BIB_T_NMT::CPOSObject;
using BIB_T_NMT::CPOSString;
using PDFSettingsImpl::CPDFSettingsError;

namespace JoboptionsParserUtils {

namespace {

constexpr std::string_view kBooleans[] = {"true", "false"};

// What is remembered of the text that is read on this thread; null while no RememberedSearches
// lives.
thread_local format::FarSearches* gSearches = nullptr;

// Where a name or key that begins at first ends. The first byte belongs to it whatever it is.
char* EndOfName(char* first) noexcept {
    char* end = first + 1;
    while (!format::kNameEnds.Has(*end)) {
        ++end;
    }
    return end;
}

// The name from first to end. Throws PDFSettingsParserException for one that is too long. Never
// inlined: its buffer must not stand in the frames that a nested value is read from.
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

bool StandsOnByte(char const* cursor, char byte) noexcept {
    return *cursor == byte;
}

// Where a value ends that must end somewhere: its length would be beyond any memory otherwise.
template <class T>
T* RequireEnd(T* end) {
    if (end == nullptr) {
        CBIBMemory::ThrowMemError();
    }
    return end;
}

void AppendElement(char** cursor, CPOSArray const& array) {
    array.Append(GetValue(cursor));
}

} // namespace

RememberedSearches::RememberedSearches() noexcept : fOuter(std::exchange(gSearches, &fSearches)) {}

RememberedSearches::~RememberedSearches() {
    gSearches = fOuter;
}

void ThrowInvalidFile() {
    throw CPDFSettingsError(
        "Joboptions_To_CPOSDict joboptions file is invalid", PDFSettingsImpl::kInvalidFile);
}

bool StandsOn(char const* cursor, char const* literal) noexcept {
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

OpenCollection::OpenCollection() {
    if (!fLevel.HasRoom()) {
        CBIBMemory::ThrowMemError();
    }
}

void SkipWhiteSpace(char** cursor) {
    for (;;) {
        if (format::kBlanks.Has(**cursor)) {
            ++*cursor;
        } else if (StandsOnByte(*cursor, '%')) {
            *cursor += std::strcspn(*cursor, "\r\n");
        } else {
            return;
        }
    }
}

CPOSString GetKey(char** cursor) {
    SkipWhiteSpace(cursor);
    char* const slash = StandsOnByte(*cursor, '/') ? *cursor : std::strchr(*cursor, '/');
    if (slash == nullptr) {
        throw PDFSettingsParserException();
    }
    char* const end = EndOfName(slash + 1);
    CPOSString key = MakeName(slash + 1, end);
    *cursor = end;
    return key;
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

void ReadEntry(char** cursor, CPOSDict const& dict) {
    try {
        CPOSString const key = GetKey(cursor);
        dict.Put(key.Get(), GetValue(cursor));
    } catch (PDFSettingsParserException const&) {
        // The entry is lost, and the next key is looked for from where it failed: even inside it.
    }
    SkipWhiteSpace(cursor);
}

bool IsName(char** cursor, CPOSObject* value) {
    if (!StandsOnByte(*cursor, '/')) {
        return false;
    }
    ++*cursor;
    char* const end = EndOfName(*cursor);
    *value = MakeName(*cursor, end);
    *cursor = end;
    return true;
}

bool IsString(char** cursor, CPOSObject* value) {
    if (!StandsOnByte(*cursor, '(')) {
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
        if (StandsOn(*cursor, word.data())) {
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
    // The number's own end: what stands behind it up to the stop is left on the text. Without any
    // digit the cursor stays.
    *cursor += number.fSize;
    return true;
}

bool IsArray(char** cursor, CPOSObject* value) {
    if (!StandsOnByte(*cursor, '[')) {
        return false;
    }
    CPOSArray const array;
    OpenCollection open;
    ++*cursor;
    SkipWhiteSpace(cursor);
    // No look for the end of the text: there, the next value fails.
    while (!StandsOnByte(*cursor, ']')) {
        AppendElement(cursor, array);
        SkipWhiteSpace(cursor);
        open.CheckProgress(*cursor);
    }
    ++*cursor;
    *value = array;
    return true;
}

bool IsDict(char** cursor, CPOSObject* value) {
    if (!StandsOn(*cursor, "<<")) {
        return false;
    }
    CPOSDict const dict;
    OpenCollection open;
    *cursor += 2;
    SkipWhiteSpace(cursor);
    // The body runs before any test: an empty dictionary takes the next key of the enclosing text.
    // And a single ">" in either of two places ends it, whatever the other byte is.
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
    if (!StandsOnByte(*cursor, '<') || (*cursor)[1] == '<') {
        return false;
    }
    ++*cursor;
    char* const end = RequireEnd(std::strchr(*cursor, '>'));
    *value = MakeBinData(kJoboptionsUnicodeStringBinType, *cursor, end);
    *cursor = end + 1;
    return true;
}

} // namespace JoboptionsParserUtils
