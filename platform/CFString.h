// The part of the CoreFoundation string service that text conversion needs.
//
// Names and values follow the service's own interface. Strings are immutable and thread-safe.
#pragma once

#include "platform/CFBase.h"

#include <optional>
#include <string>

// A reference to an immutable string of UTF-16 units.
using CFStringRef = struct __CFString const*;

using CFStringEncoding = std::uint32_t;

// Mac Roman, UTF-16 in the machine's byte order, and UTF-8.
inline constexpr CFStringEncoding kCFStringEncodingMacRoman = 0;
inline constexpr CFStringEncoding kCFStringEncodingUnicode = 256;
inline constexpr CFStringEncoding kCFStringEncodingUTF8 = 134217984;

// A new string from numBytes bytes in encoding, with one reference for the caller. Null if memory
// runs out, if the bytes are invalid in encoding, or if encoding is not one of the three above. In
// UTF-16, an odd last byte is dropped and an unpaired surrogate is invalid.
// isExternalRepresentation is ignored: a byte order mark is part of the text.
CFStringRef CFStringCreateWithBytes(
    CFAllocatorRef allocator,
    UInt8 const* bytes,
    CFIndex numBytes,
    CFStringEncoding encoding,
    Boolean isExternalRepresentation) noexcept;

// The same for a NUL-terminated string.
CFStringRef CFStringCreateWithCString(
    CFAllocatorRef allocator, char const* cStr, CFStringEncoding encoding) noexcept;

CFTypeID CFStringGetTypeID() noexcept;

// Copies the units in range to buffer. REQUIRES: range is within the string.
void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar* buffer) noexcept;

// Stores the encoded string and a NUL in a buffer of bufferSize bytes. Returns false if they do not
// fit or the encoding cannot represent the string.
Boolean CFStringGetCString(
    CFStringRef string, char* buffer, CFIndex bufferSize, CFStringEncoding encoding) noexcept;

// The length in UTF-16 units; 0 for null.
CFIndex CFStringGetLength(CFStringRef string) noexcept;

// Encodes the units in range to buffer, up to maxBufLen bytes; only measures if buffer is null.
// *usedBufLen (may be null) receives the number of bytes. Returns the number of units converted:
// conversion stops before the first unit that the encoding cannot represent, such as an unpaired
// surrogate in UTF-8. Returns 0 for null. lossByte must be 0. No byte order mark is written.
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

// The string in encoding, or nullopt if encoding cannot represent all of it. Throws std::bad_alloc.
std::optional<std::string> BytesOf(CFStringRef string, CFStringEncoding encoding);

} // namespace platform
