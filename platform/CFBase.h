// What all CoreFoundation objects have in common: a reference count.
//
// Names and values follow the service's own interface.
#pragma once

#include <cstdint>

using CFTypeRef = void const*;
using CFIndex = long;
using Boolean = unsigned char;
using UInt8 = std::uint8_t;
using SInt32 = std::int32_t;
using UniChar = unsigned short;
using CFAllocatorRef = void const*;

// There is only one allocator: this value and every other select it.
inline constexpr CFAllocatorRef kCFAllocatorDefault = nullptr;

struct CFRange {
    CFIndex location;
    CFIndex length;
};

constexpr CFRange CFRangeMake(CFIndex location, CFIndex length) noexcept {
    return {location, length};
}

using CFTypeID = unsigned long;

// The type of an object, to be compared with the result of a type's CF…GetTypeID(). REQUIRES:
// object is not null.
CFTypeID CFGetTypeID(CFTypeRef object) noexcept;

// Whether two objects have the same type and equal contents. Null equals nothing.
Boolean CFEqual(CFTypeRef a, CFTypeRef b) noexcept;

// Adds a reference and returns object. REQUIRES: object is not null. Thread-safe.
CFTypeRef CFRetain(CFTypeRef object) noexcept;

// Releases a reference; the last one destroys the object. REQUIRES: object is not null.
// Thread-safe.
void CFRelease(CFTypeRef object) noexcept;
