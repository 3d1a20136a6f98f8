// What all objects of the CoreFoundation services have in common: a reference count.
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

// There is one allocator: this value, and every other, stands for it.
inline constexpr CFAllocatorRef kCFAllocatorDefault = nullptr;

struct CFRange {
    CFIndex location;
    CFIndex length;
};

constexpr CFRange CFRangeMake(CFIndex location, CFIndex length) noexcept {
    return {location, length};
}

using CFTypeID = unsigned long;

// The type of an object: compare it with what CF…GetTypeID() of a type gives. REQUIRES: object is
// not null.
CFTypeID CFGetTypeID(CFTypeRef object) noexcept;

// Whether two objects are of one type and have equal contents. Null equals nothing.
Boolean CFEqual(CFTypeRef a, CFTypeRef b) noexcept;

// Adds a reference and returns object. REQUIRES: object is not null. Safe across threads.
CFTypeRef CFRetain(CFTypeRef object) noexcept;

// Gives a reference up, and destroys the object with the last one. REQUIRES: object is not null.
// Safe across threads.
void CFRelease(CFTypeRef object) noexcept;
