// Looks into property lists, whose values may be of any type.
#pragma once

#include <vector>

#include "api/UnicodeEncoding.h"
#include "platform/CFCollections.h"
#include "platform/CFString.h"
#include "source/AutoCFRelease.h"

namespace PropertyLists {

// The value under a key of dict, borrowed; null when there is none and when it is of another type.
// Throw std::bad_alloc.
CFStringRef FindString(CFDictionaryRef dict, char const* key);
CFArrayRef FindArray(CFDictionaryRef dict, char const* key);
CFDictionaryRef FindDictionary(CFDictionaryRef dict, char const* key);

// The value itself, borrowed, if it is of that type, else null; null for null.
CFStringRef AsString(void const* value) noexcept;
CFDictionaryRef AsDictionary(void const* value) noexcept;

// The keys of dict in their order, borrowed. Throws std::bad_alloc.
std::vector<CFStringRef> KeysOf(CFDictionaryRef dict);

// A string of a text in Mac Roman, the encoding of keys. Throws std::bad_alloc.
AutoCFRelease<CFStringRef> MakeString(char const* text);

// A 16-bit string of the same text, a byte order mark at its head included. Throws CBIBError.
BIB_T_NMT::CPOSUnicodeString StringOf(CFStringRef string);

// The text of a path; a mark at its head is removed or honoured. Throws CBIBError.
UnicodeEncodingNS::Unicode16 PathOf(CFStringRef string);

} // namespace PropertyLists
