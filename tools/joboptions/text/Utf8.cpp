#include "tools/joboptions/text/Utf8.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>
#include <utf8proc.h>

namespace joboptions {

namespace {

// The length of the well-formed character at the start of text and its code point; else 0.
std::size_t Decode(std::string_view text, utf8proc_int32_t& codePoint) {
    auto const* const bytes = reinterpret_cast<utf8proc_uint8_t const*>(text.data());
    auto const length =
        utf8proc_iterate(bytes, static_cast<utf8proc_ssize_t>(text.size()), &codePoint);
    return length > 0 ? static_cast<std::size_t>(length) : 0;
}

bool IsControl(utf8proc_int32_t codePoint) {
    return utf8proc_category(codePoint) == UTF8PROC_CATEGORY_CC;
}

// Not what ends a line, turns its direction or hides in it.
bool IsShown(utf8proc_int32_t codePoint) {
    switch (utf8proc_category(codePoint)) {
    case UTF8PROC_CATEGORY_CC:
    case UTF8PROC_CATEGORY_CF:
    case UTF8PROC_CATEGORY_ZL:
    case UTF8PROC_CATEGORY_ZP:
        return false;
    default:
        return true;
    }
}

bool IsPrintableAscii(char character) {
    return character >= ' ' && character <= '~';
}

void AppendOctal(std::string& text, std::string_view bytes) {
    for (char const byte : bytes) {
        fmt::format_to(std::back_inserter(text), "\\{:03o}", static_cast<unsigned char>(byte));
    }
}

// In JSON a character is one or two units of UTF-16.
void AppendJsonEscape(std::string& escaped, unsigned codePoint) {
    if (codePoint > 0xFFFF) {
        AppendJsonEscape(escaped, 0xD800 + ((codePoint - 0x10000) >> 10));
        codePoint = 0xDC00 + (codePoint & 0x3FF);
    }
    fmt::format_to(std::back_inserter(escaped), "\\u{:04x}", codePoint);
}

} // namespace

Character FirstCharacter(std::string_view text) {
    if (IsPrintableAscii(text[0])) {
        return {text.substr(0, 1), true};
    }
    utf8proc_int32_t codePoint = 0;
    std::size_t const length = Decode(text, codePoint);
    return length == 0 ? Character{text.substr(0, 1), false}
                       : Character{text.substr(0, length), IsShown(codePoint)};
}

bool IsPlainText(std::string_view text) {
    while (!text.empty()) {
        utf8proc_int32_t codePoint = 0;
        std::size_t const length = Decode(text, codePoint);
        if (length == 0 || (codePoint >= 0x20 && IsControl(codePoint))) {
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
        character.isPrintable ? static_cast<void>(visible += character.bytes)
                              : AppendOctal(visible, character.bytes);
        text.remove_prefix(character.bytes.size());
    }
    return visible;
}

std::string WellFormedText(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        utf8proc_int32_t codePoint = 0;
        std::size_t const length = Decode(text, codePoint);
        std::string_view const bytes = text.substr(0, std::max<std::size_t>(length, 1));
        length != 0 ? static_cast<void>(result += bytes) : AppendOctal(result, bytes);
        text.remove_prefix(bytes.size());
    }
    return result;
}

std::string JsonEscapes(std::string_view json) {
    std::string escaped;
    while (!json.empty()) {
        Character const character = FirstCharacter(json);
        utf8proc_int32_t codePoint = 0;
        bool const isEscaped = !character.isPrintable && character.bytes != "\n" &&
                               Decode(character.bytes, codePoint) != 0;
        isEscaped ? AppendJsonEscape(escaped, static_cast<unsigned>(codePoint))
                  : static_cast<void>(escaped += character.bytes);
        json.remove_prefix(character.bytes.size());
    }
    return escaped;
}

std::size_t DisplayWidth(std::string_view visible) {
    std::size_t width = 0;
    while (!visible.empty()) {
        utf8proc_int32_t codePoint = 0;
        std::size_t const length = Decode(visible, codePoint);
        width += length == 0 ? 1 : static_cast<std::size_t>(utf8proc_charwidth(codePoint));
        visible.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return width;
}

} // namespace joboptions
