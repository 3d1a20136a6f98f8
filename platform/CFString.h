// The CoreFoundation string service, as far as text conversion needs it.
//
// Names and values follow the service's own interface. Strings are immutable and safe across
// threads.
#pragma once

#include "platform/CFBase.h"

#include <optional>
#include <string>

// A reference on an immutable string of UTF-16 units.
using CFStringRef = struct __CFString const*;

using CFStringEncoding = std::uint32_t;

// Mac Roman, UTF-16 in the machine's byte order, and UTF-8.
inline constexpr CFStringEncoding kCFStringEncodingMacRoman = 0;
inline constexpr CFStringEncoding kCFStringEncodingUnicode = 256;
inline constexpr CFStringEncoding kCFStringEncodingUTF8 = 134217984;

// A new string of the decoded bytes, with one reference for the caller; null when memory runs out,
// when the bytes are no text in encoding, and for an encoding other than the three above. The last
// odd byte of UTF-16 is dropped, and an unpaired surrogate makes it no text.
// isExternalRepresentation is not looked at: a byte order mark is text.
CFStringRef CFStringCreateWithBytes(
    CFAllocatorRef allocator,
    UInt8 const* bytes,
    CFIndex numBytes,
    CFStringEncoding encoding,
    Boolean isExternalRepresentation) noexcept;

// The same of a NUL-terminated text.
CFStringRef CFStringCreateWithCString(
    CFAllocatorRef allocator, char const* cStr, CFStringEncoding encoding) noexcept;

CFTypeID CFStringGetTypeID() noexcept;

// The units of range into buffer. REQUIRES: range lies in the string.
void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar* buffer) noexcept;

// The string and a NUL into a buffer of bufferSize bytes. False when they do not fit or the
// encoding cannot hold the string.
Boolean CFStringGetCString(
    CFStringRef string, char* buffer, CFIndex bufferSize, CFStringEncoding encoding) noexcept;

// The length in UTF-16 units; 0 for null.
CFIndex CFStringGetLength(CFStringRef string) noexcept;

// Encodes the units of range into buffer, as far as maxBufLen bytes allow, or only measures if
// buffer is null; *usedBufLen (may be null) is the number of bytes. The result is the number of
// units that were converted: conversion stops before the first one that the encoding cannot hold,
// such as an unpaired surrogate in UTF-8. lossByte must be 0, and no mark is written. 0 for null.
CFIndex CFStringGetBytes(
    CFStringRef string,
    CFRange range,
    CFStringEncoding encoding,
    UInt8 lossByte,
    Boolean isExternalRepresentation,
    UInt8* buffer,
    CFIndex maxBufLen,
    CFIndex* usedBufLen) noexcept;

namespace platform {

// The text of string in an encoding that holds all of it; nothing for one that does not. Throws
// std::bad_alloc.
std::optional<std::string> BytesOf(CFStringRef string, CFStringEncoding encoding);

} // namespace platform
