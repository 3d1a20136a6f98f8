#include "runtime/values/Utf16.h"

namespace bibrt {

namespace {

constexpr unsigned kFirstHigh = 0xD800;
constexpr unsigned kFirstLow = 0xDC00;
constexpr unsigned kPastLow = 0xE000;
constexpr unsigned kFirstPaired = 0x10000;
constexpr unsigned kReplacement = 0xFFFD;

bool IsLow(unsigned unit) noexcept {
    return unit >= kFirstLow && unit < kPastLow;
}

// The code point at position, which moves behind it.
unsigned
NextCodePoint(unsigned short const* units, unsigned long length, unsigned long& position) noexcept {
    unsigned const unit = units[position++];
    if (unit < kFirstHigh || unit >= kPastLow) {
        return unit;
    }
    if (IsLow(unit) || position == length || !IsLow(units[position])) {
        return kReplacement;
    }
    unsigned const low = units[position++];
    return kFirstPaired + ((unit - kFirstHigh) << 10) + (low - kFirstLow);
}

void AppendTail(String& out, unsigned codePoint, unsigned shift) {
    out.push_back(static_cast<char>(0x80U | ((codePoint >> shift) & 0x3FU)));
}

void AppendCodePoint(String& out, unsigned codePoint) {
    if (codePoint < 0x80) {
        out.push_back(static_cast<char>(codePoint));
        return;
    }
    if (codePoint < 0x800) {
        out.push_back(static_cast<char>(0xC0U | (codePoint >> 6)));
    } else if (codePoint < kFirstPaired) {
        out.push_back(static_cast<char>(0xE0U | (codePoint >> 12)));
        AppendTail(out, codePoint, 6);
    } else {
        out.push_back(static_cast<char>(0xF0U | (codePoint >> 18)));
        AppendTail(out, codePoint, 12);
        AppendTail(out, codePoint, 6);
    }
    AppendTail(out, codePoint, 0);
}

} // namespace

void AppendUtf8(String& out, unsigned short const* units, unsigned long length) {
    unsigned long position = 0;
    while (position < length) {
        AppendCodePoint(out, NextCodePoint(units, length, position));
    }
}

} // namespace bibrt
