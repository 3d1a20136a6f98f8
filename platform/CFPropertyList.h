// Property lists in XML, and the CoreFoundation arrays and dictionaries that they are made of.
#pragma once

#include "platform/CFBase.h"
#include "platform/CFString.h"
#include "platform/CFURL.h"

using CFArrayRef = struct __CFArray const*;
using CFDictionaryRef = struct __CFDictionary const*;

CFTypeID CFArrayGetTypeID() noexcept;

// The number of elements, and the element at index, borrowed. REQUIRES: array is not null and index
// lies in it.
CFIndex CFArrayGetCount(CFArrayRef array) noexcept;
void const* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) noexcept;

CFTypeID CFDictionaryGetTypeID() noexcept;

// The number of entries. REQUIRES, here and below: dict is not null.
CFIndex CFDictionaryGetCount(CFDictionaryRef dict) noexcept;

// The value under a key that equals key, borrowed; null when there is none.
void const* CFDictionaryGetValue(CFDictionaryRef dict, void const* key) noexcept;

// All keys and values, borrowed, in the order of the property list; either may be null.
void CFDictionaryGetKeysAndValues(
    CFDictionaryRef dict, void const** keys, void const** values) noexcept;

using CFPropertyListRef = void const*;
using CFOptionFlags = unsigned long;

inline constexpr CFOptionFlags kCFPropertyListImmutable = 0;

// The value in xmlData, with one reference for the caller: strings, arrays and dictionaries as
// such; numbers, dates, data and booleans as objects of a type of their own. Of equal keys the last
// one counts. Null for what is no property list, for one with entities of its own or more than 64
// levels, and when memory runs out; *errorString (may be null) is null then too: no description is
// made. mutabilityOption is not looked at.
CFPropertyListRef CFPropertyListCreateFromXMLData(
    CFAllocatorRef allocator,
    CFDataRef xmlData,
    CFOptionFlags mutabilityOption,
    CFStringRef* errorString) noexcept;
