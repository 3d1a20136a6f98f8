// Property lists in XML.
#pragma once

#include "platform/CFString.h"
#include "platform/CFURL.h"

using CFPropertyListRef = void const*;
using CFOptionFlags = unsigned long;

inline constexpr CFOptionFlags kCFPropertyListImmutable = 0;

// The value in xmlData, with one reference for the caller: strings, arrays and dictionaries as
// such; numbers, dates, data and booleans as objects of a type of their own. Of equal keys the last
// one counts. Null for what is no property list, for one with entities of its own or more than 256
// levels, and when memory runs out; *errorString (may be null) is null then too: no description is
// made. mutabilityOption is not looked at.
CFPropertyListRef CFPropertyListCreateFromXMLData(
    CFAllocatorRef allocator,
    CFDataRef xmlData,
    CFOptionFlags mutabilityOption,
    CFStringRef* errorString) noexcept;
