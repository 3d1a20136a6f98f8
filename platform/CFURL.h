// Files as the CoreFoundation services name and read them.
#pragma once

#include "platform/CFString.h"

using CFURLRef = struct __CFURL const*;
using CFDataRef = struct __CFData const*;
using CFURLPathStyle = CFIndex;

inline constexpr CFURLPathStyle kCFURLPOSIXPathStyle = 0;

// A new URL of a path, with one reference for the caller; null for a null or empty path, for
// another style and when memory runs out. isDirectory is not looked at. Callers make the text of
// the bytes of a path as Mac Roman (encoding 0), which has a character for each byte; so the path
// has these bytes again, in whatever encoding they are. A character that Mac Roman lacks: null.
CFURLRef CFURLCreateWithFileSystemPath(
    CFAllocatorRef allocator,
    CFStringRef filePath,
    CFURLPathStyle pathStyle,
    Boolean isDirectory) noexcept;

// The bytes of the file that url names in *resourceData, with one reference for the caller. False,
// with the result code of the file service in *errorCode and nothing else stored, when it cannot be
// read or is larger than 64 MiB. The other two arguments must be null; errorCode may be.
Boolean CFURLCreateDataAndPropertiesFromResource(
    CFAllocatorRef allocator,
    CFURLRef url,
    CFDataRef* resourceData,
    void* properties,
    void* desiredProperties,
    SInt32* errorCode) noexcept;

// The number of bytes, and the bytes, which belong to the data. REQUIRES: data is not null.
CFIndex CFDataGetLength(CFDataRef data) noexcept;
UInt8 const* CFDataGetBytePtr(CFDataRef data) noexcept;
