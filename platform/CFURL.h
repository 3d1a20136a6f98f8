// Files in the CoreFoundation services.
#pragma once

#include "platform/CFString.h"

using CFURLRef = struct __CFURL const*;
using CFDataRef = struct __CFData const*;
using CFURLPathStyle = CFIndex;

inline constexpr CFURLPathStyle kCFURLPOSIXPathStyle = 0;

// A new URL for a path, with one reference for the caller. Null for a null or empty path, for
// another style, for a character that Mac Roman lacks, and if memory runs out. isDirectory is
// ignored. Callers make filePath from the bytes of a path by decoding them as Mac Roman (encoding
// 0), which has a character for each byte. The URL encodes it back, so it has the same bytes,
// whatever their real encoding is.
CFURLRef CFURLCreateWithFileSystemPath(
    CFAllocatorRef allocator,
    CFStringRef filePath,
    CFURLPathStyle pathStyle,
    Boolean isDirectory) noexcept;

// Stores the bytes of the file at url in *resourceData, with one reference for the caller, and
// returns true. Returns false if the file cannot be read or is larger than 64 MiB; then only the
// file service's result code is stored, in *errorCode. properties and desiredProperties must be
// null; errorCode may be null.
Boolean CFURLCreateDataAndPropertiesFromResource(
    CFAllocatorRef allocator,
    CFURLRef url,
    CFDataRef* resourceData,
    void* properties,
    void* desiredProperties,
    SInt32* errorCode) noexcept;

// The number of bytes, and the bytes, owned by the data. REQUIRES: data is not null.
CFIndex CFDataGetLength(CFDataRef data) noexcept;
UInt8 const* CFDataGetBytePtr(CFDataRef data) noexcept;
