// The scanner of job options text: one probe for each kind of value.
//
// All work on a cursor into a text that ends in four zero bytes, with plain pointer semantics: a
// zero byte ends every search, and a scanner that has stepped over one reads on from there. A probe
// answers true when it has stored the value and moved the cursor past it, and false when it has
// done neither. Every function may throw CBIBError (the memory error, the runtime's errors). Those
// that read keys or values throw PDFSettingsParserException for an entry that cannot be read; it
// leaves the cursor inside that entry.
#pragma once

#include "bib/BIBClient.h"
#include "bib/POSCollections.h"
#include "bib/POSObject.h"
#include "bib/POSScalars.h"
#include "format/Tokens.h"
#include "platform/StackRoom.h"

namespace JoboptionsParserUtils {

// The type names of the binary data that strings and hexadecimal strings are kept in, byte for byte
// as they stand in the text.
inline constexpr char kJoboptionsStringBinType[] = "JoboptionsString";
inline constexpr char kJoboptionsUnicodeStringBinType[] = "JoboptionsUnicodeString";

// Keeps the time for a text in proportion to its length while it is read on the current thread: a
// search for a far end is made once. Such objects nest. Without one, every search is made anew.
// REQUIRES: the text does not change while the object lives.
class RememberedSearches {
public:
    RememberedSearches() noexcept;
    ~RememberedSearches();
    RememberedSearches(RememberedSearches const&) = delete;
    RememberedSearches& operator=(RememberedSearches const&) = delete;

private:
    format::FarSearches fSearches;
    format::FarSearches* fOuter;
};

// Says that an entry cannot be read. Never leaves the reader.
class PDFSettingsParserException : public BIB_T_NMT::CBIBVirtualClientBase {};

// Throws the CPDFSettingsError for a text that is no job options text.
[[noreturn]] void ThrowInvalidFile();

// A dictionary or an array that is being read, or the settings themselves: one level of nesting,
// and a loop over its parts. One object for both, since each takes stack in every level.
class OpenCollection {
public:
    // Throws the memory error where the stack has no room for the level.
    OpenCollection();

    // To be called at the end of each turn. A loop can only repeat itself that leaves the cursor
    // where the turn before left it: throws as ThrowInvalidFile().
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

// Whether the text at cursor begins with literal.
bool StandsOn(char const* cursor, char const* literal) noexcept;

// Binary data of the bytes from begin to end.
BIB_T_NMT::CPOSBinData MakeBinData(char const* typeName, char const* begin, char const* end);

// Moves the cursor over blanks, line ends and comments. A comment ends with its line, or with the
// text.
void SkipWhiteSpace(char** cursor);

// The next key, without its slash. Whatever stands before it is passed over.
BIB_T_NMT::CPOSString GetKey(char** cursor);

// The next value. Throws CPDFSettingsError for one of no known kind.
BIB_T_NMT::CPOSObject GetValue(char** cursor);

// Reads the next entry into dict, and skips what follows it. An entry that cannot be read is
// dropped, and the cursor stays where the failure left it.
void ReadEntry(char** cursor, BIB_T_NMT::CPOSDict const& dict);

// The probes, in the order in which GetValue tries them.
bool IsName(char** cursor, BIB_T_NMT::CPOSObject* value);
bool IsString(char** cursor, BIB_T_NMT::CPOSObject* value);
bool IsBoolean(char** cursor, BIB_T_NMT::CPOSObject* value);
bool IsNumber(char** cursor, BIB_T_NMT::CPOSObject* value);
bool IsArray(char** cursor, BIB_T_NMT::CPOSObject* value);
bool IsDict(char** cursor, BIB_T_NMT::CPOSObject* value);
bool IsUnicodeString(char** cursor, BIB_T_NMT::CPOSObject* value);

} // namespace JoboptionsParserUtils
