// XML property lists, and the CoreFoundation arrays and dictionaries in them.
#pragma once

#include "platform/CFBase.h"
#include "platform/CFString.h"
#include "platform/CFURL.h"

using CFArrayRef = struct __CFArray const*;
using CFDictionaryRef = struct __CFDictionary const*;

CFTypeID CFArrayGetTypeID() noexcept;

// The number of elements, and the element at index, borrowed. REQUIRES: array is not null and index
// is in range.
CFIndex CFArrayGetCount(CFArrayRef array) noexcept;
void const* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) noexcept;

CFTypeID CFDictionaryGetTypeID() noexcept;

// The number of entries. REQUIRES, here and below: dict is not null.
CFIndex CFDictionaryGetCount(CFDictionaryRef dict) noexcept;

// The value under a key that equals key, borrowed; null if there is none.
void const* CFDictionaryGetValue(CFDictionaryRef dict, void const* key) noexcept;

// Stores all keys and values, borrowed, in the order of the property list. keys and values may be
// null.
void CFDictionaryGetKeysAndValues(
    CFDictionaryRef dict, void const** keys, void const** values) noexcept;

using CFPropertyListRef = void const*;
using CFOptionFlags = unsigned long;

inline constexpr CFOptionFlags kCFPropertyListImmutable = 0;

// The value in xmlData, with one reference for the caller. Strings, arrays and dictionaries have
// their own types; numbers, dates, data and booleans are objects of one further type. If a key is
// repeated, the last value is used. Null if xmlData is not a property list, declares entities, has
// more than 64 levels, or if memory runs out. *errorString (may be null) is always set to null: no
// description is made. mutabilityOption is ignored.
CFPropertyListRef CFPropertyListCreateFromXMLData(
    CFAllocatorRef allocator,
    CFDataRef xmlData,
    CFOptionFlags mutabilityOption,
    CFStringRef* errorString) noexcept;
