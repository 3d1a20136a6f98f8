#include "tools/joboptions/Utf8.h"

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

bool IsControl(unsigned codePoint) {
    return codePoint < 0x20 || (codePoint >= 0x7F && codePoint < 0xA0);
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
    return {text.substr(0, length), !IsControl(codePoint)};
}

bool IsPlainText(std::string_view text) {
    while (!text.empty()) {
        Character const character = FirstCharacter(text);
        if (!character.isPrintable && Byte(text[0]) >= 0x20) {
            return false;
        }
        text.remove_prefix(character.bytes.size());
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
    for (char const byte : visible) {
        width += (Byte(byte) & 0xC0) == 0x80 ? 0u : 1u;
    }
    return width;
}

} // namespace joboptions
