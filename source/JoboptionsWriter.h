// The writer of job options text: one probe for each kind of value, the mirror of JoboptionsReader.
//
// A probe answers true when it has written the value and its line end, and false when the value is
// of another kind or could not be written; what it wrote until then stays in the stream. Levels
// count the dictionaries and arrays around a value. A probe that goes deeper throws
// NestingException when the stack cannot bear it, and behind 5,000 levels; nothing else leaves a
// probe but what making an empty stream may throw. REQUIRES: a platform::StackWatch lives on the
// thread.
#pragma once

#include "bib/BIBClient.h"
#include "bib/BIBStream.h"
#include "bib/POSObject.h"

namespace POSObjectParserUtils {

// Stands for one level of nesting.
inline constexpr char kLevelIndentStr[] = "  ";

// Says that a value is nested too deep for the stack. Never leaves the writer.
class NestingException : public BIB_T_NMT::CBIBVirtualClientBase {};

// Writes a NUL-terminated text. Throws the stream's error.
void WriteText(char const* text, BIB_T_NMT::CBIBPositionableStream& stream);

// Writes the value of any kind. Throws CPDFSettingsError for one of no known kind, and for one
// that could not be written.
void GetValue(
    BIB_T_NMT::CPOSObject const& value,
    BIB_T_NMT::CBIBPositionableStream& stream,
    unsigned long level);

// The probes, in the order in which GetValue tries them. IsName tries IsBoolean first. When IsDict
// fails, it exchanges stream for a new, empty one.
bool IsBoolean(BIB_T_NMT::CPOSObject const& value, BIB_T_NMT::CBIBPositionableStream& stream);
bool IsName(BIB_T_NMT::CPOSObject const& value, BIB_T_NMT::CBIBPositionableStream& stream);
bool IsString(BIB_T_NMT::CPOSObject const& value, BIB_T_NMT::CBIBPositionableStream& stream);
bool IsNumber(BIB_T_NMT::CPOSObject const& value, BIB_T_NMT::CBIBPositionableStream& stream);
bool IsArray(
    BIB_T_NMT::CPOSObject const& value,
    BIB_T_NMT::CBIBPositionableStream& stream,
    unsigned long level);
bool IsDict(
    BIB_T_NMT::CPOSObject const& value,
    BIB_T_NMT::CBIBPositionableStream& stream,
    unsigned long level);
bool IsUnicodeString(BIB_T_NMT::CPOSObject const& value, BIB_T_NMT::CBIBPositionableStream& stream);

// Writes the value of a key whose numbers have a form of their own. False for every other key and
// for a value that is no number. Throws what writing throws.
bool SpecialKeyFormatting(
    char const* key, BIB_T_NMT::CPOSObject const& value, BIB_T_NMT::CBIBPositionableStream& stream);

} // namespace POSObjectParserUtils
