// The CoreFoundation arrays and dictionaries, as far as property lists need them. They are
// immutable and safe across threads; they hold references on what is in them.
#pragma once

#include "platform/CFBase.h"

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
