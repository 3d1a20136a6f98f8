#include "tools/joboptions/Utf8.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>

namespace joboptions {

namespace {

unsigned Byte(char character) {
    return static_cast<unsigned char>(character);
}

// The length that a lead byte announces; 0 for a byte that begins no character.
std::size_t AnnouncedLength(unsigned lead) {
    if (lead < 0x80) {
        return 1;
    }
    if (lead >= 0xC2 && lead < 0xE0) {
        return 2;
    }
    if (lead >= 0xE0 && lead < 0xF0) {
        return 3;
    }
    return lead >= 0xF0 && lead < 0xF5 ? 4 : 0;
}

// The smallest code point that needs so many bytes; a smaller one is an overlong form.
constexpr unsigned kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};

// The length of the well-formed character at the start of text and its code point; else 0.
std::size_t Decode(std::string_view text, unsigned& codePoint) {
    std::size_t const length = AnnouncedLength(Byte(text[0]));
    if (length == 0 || length > text.size()) {
        return 0;
    }
    codePoint = length == 1 ? Byte(text[0]) : Byte(text[0]) & (0x7Fu >> length);
    for (char const next : text.substr(1, length - 1)) {
        if ((Byte(next) & 0xC0) != 0x80) {
            return 0;
        }
        codePoint = codePoint << 6 | (Byte(next) & 0x3F);
    }
    bool const isSurrogate = codePoint >= 0xD800 && codePoint < 0xE000;
    bool const isScalar = codePoint >= kSmallest[length] && codePoint <= 0x10FFFF && !isSurrogate;
    return isScalar ? length : 0;
}

struct Range {
    unsigned fFirst;
    unsigned fLast;
};

constexpr Range kControls[] = {{0x00, 0x1F}, {0x7F, 0x9F}};

// What turns the direction of a line, or hides in it (of the general category Cf of Unicode 15).
constexpr Range kHidden[] = {
    {0x061C, 0x061C},
    {0x200B, 0x200B},
    {0x200E, 0x200F},
    {0x2028, 0x202E},
    {0x2060, 0x206F},
    {0xFEFF, 0xFEFF},
    {0xFFF9, 0xFFFB}};

// What stands on the character before it (category Mn, the blocks that are met).
constexpr Range kCombining[] = {
    {0x0300, 0x036F},
    {0x0483, 0x0489},
    {0x0591, 0x05BD},
    {0x064B, 0x065F},
    {0x1AB0, 0x1AFF},
    {0x1DC0, 0x1DFF},
    {0x20D0, 0x20FF},
    {0x3099, 0x309A},
    {0xFE00, 0xFE0F},
    {0xFE20, 0xFE2F}};

// What takes two cells (East Asian Width W and F of Unicode 15, by blocks).
constexpr Range kWide[] = {
    {0x1100, 0x115F},
    {0x2E80, 0x303E},
    {0x3041, 0x33FF},
    {0x3400, 0x4DBF},
    {0x4E00, 0x9FFF},
    {0xA000, 0xA4CF},
    {0xA960, 0xA97F},
    {0xAC00, 0xD7A3},
    {0xF900, 0xFAFF},
    {0xFE30, 0xFE6F},
    {0xFF00, 0xFF60},
    {0xFFE0, 0xFFE6},
    {0x1F300, 0x1F64F},
    {0x1F680, 0x1F6FF},
    {0x1F900, 0x1F9FF},
    {0x20000, 0x3FFFD}};

template <std::size_t kSize>
bool IsIn(Range const (&ranges)[kSize], unsigned codePoint) {
    return std::ranges::any_of(ranges, [codePoint](Range const& range) {
        return codePoint >= range.fFirst && codePoint <= range.fLast;
    });
}

std::size_t CellsOf(unsigned codePoint) {
    if (IsIn(kCombining, codePoint)) {
        return 0;
    }
    return IsIn(kWide, codePoint) ? 2 : 1;
}

// Adds a character as it stands, or its bytes as escapes if a terminal must not see them.
void AppendVisible(std::string& visible, Character const& character) {
    if (character.isPrintable) {
        visible += character.bytes;
        return;
    }
    for (char const byte : character.bytes) {
        fmt::format_to(std::back_inserter(visible), "\\{:03o}", Byte(byte));
    }
}

} // namespace

Character FirstCharacter(std::string_view text) {
    unsigned codePoint = 0;
    std::size_t const length = Decode(text, codePoint);
    if (length == 0) {
        return {text.substr(0, 1), false};
    }
    bool const isShown = !IsIn(kControls, codePoint) && !IsIn(kHidden, codePoint);
    return {text.substr(0, length), isShown};
}

bool IsPlainText(std::string_view text) {
    while (!text.empty()) {
        unsigned codePoint = 0;
        std::size_t const length = Decode(text, codePoint);
        bool const isControl = codePoint >= 0x20 && IsIn(kControls, codePoint);
        if (length == 0 || isControl) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

std::string VisibleText(std::string_view text) {
    std::string visible;
    while (!text.empty()) {
        Character const character = FirstCharacter(text);
        AppendVisible(visible, character);
        text.remove_prefix(character.bytes.size());
    }
    return visible;
}

std::size_t DisplayWidth(std::string_view visible) {
    std::size_t width = 0;
    while (!visible.empty()) {
        unsigned codePoint = 0;
        std::size_t const length = Decode(visible, codePoint);
        width += length == 0 ? 1 : CellsOf(codePoint);
        visible.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return width;
}

} // namespace joboptions
