#include "format/StringText.h"

#include <cstddef>

namespace format {

namespace {

constexpr std::string_view kLetters = "nrtbf";
constexpr std::string_view kMeanings = "\n\r\t\b\f";

bool IsOctal(char byte) noexcept {
    return byte >= '0' && byte <= '7';
}

std::size_t LineEndSize(std::string_view text) noexcept {
    return text.starts_with("\r\n") ? 2
                                    : (text.starts_with('\r') || text.starts_with('\n') ? 1 : 0);
}

// Removes the leading octal digits from rest and returns their byte. Excess high bits are dropped,
// as in PostScript.
char TakeOctal(std::string_view& rest) {
    constexpr std::size_t kMostDigits = 3;
    unsigned value = 0;
    for (std::size_t digits = 0; digits < kMostDigits && !rest.empty() && IsOctal(rest.front());
         ++digits) {
        value = value * 8 + static_cast<unsigned>(rest.front() - '0');
        rest.remove_prefix(1);
    }
    return static_cast<char>(static_cast<unsigned char>(value & 0xFF));
}

// Removes an escape from rest, which begins after the backslash, and appends its text.
void TakeEscape(std::string_view& rest, std::string& text) {
    if (rest.empty()) {
        return;
    }
    if (IsOctal(rest.front())) {
        text += TakeOctal(rest);
        return;
    }
    if (std::size_t const lineEnd = LineEndSize(rest)) {
        rest.remove_prefix(lineEnd);
        return;
    }
    std::size_t const letter = kLetters.find(rest.front());
    text += letter == std::string_view::npos ? rest.front() : kMeanings[letter];
    rest.remove_prefix(1);
}

void AppendOctal(char byte, std::string& raw) {
    auto const value = static_cast<unsigned char>(byte);
    raw += '\\';
    for (int shift = 6; shift >= 0; shift -= 3) {
        raw += static_cast<char>('0' + ((value >> shift) & 7));
    }
}

} // namespace

std::string DecodeString(std::string_view raw) {
    std::string text;
    while (!raw.empty()) {
        std::size_t const lineEnd = LineEndSize(raw);
        char const byte = raw.front();
        raw.remove_prefix(lineEnd == 0 ? 1 : lineEnd);
        if (byte == '\\') {
            TakeEscape(raw, text);
        } else {
            text += lineEnd == 0 ? byte : '\n';
        }
    }
    return text;
}

std::string EncodeString(std::string_view text) {
    std::string raw;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char const byte = text[i];
        std::size_t const letter = kMeanings.find(byte);
        bool const isBeforeEnd = i + 1 < text.size() && text[i + 1] == ')';
        if (byte == '\\') {
            // "\\\)" would end the string at the parenthesis.
            raw += isBeforeEnd ? "\\134" : "\\\\";
        } else if (byte == '(' || byte == ')') {
            raw += '\\';
            raw += byte;
        } else if (letter != std::string_view::npos) {
            raw += '\\';
            raw += kLetters[letter];
        } else if (static_cast<unsigned char>(byte) < ' ' || byte == '\x7F') {
            AppendOctal(byte, raw);
        } else {
            raw += byte;
        }
    }
    return raw;
}

} // namespace format
