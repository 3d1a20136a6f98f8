#include "tools/joboptions/text/Utf8.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>
#include <utf8proc.h>

namespace joboptions {

namespace {

// Stands for the code point of a byte that is not part of a character.
constexpr utf8proc_int32_t kNone = -1;

// Calls visit with the bytes and the code point of each character of text.
template <class Visit>
void ForEachCharacter(std::string_view text, Visit visit) {
    while (!text.empty()) {
        auto const* const bytes = reinterpret_cast<utf8proc_uint8_t const*>(text.data());
        utf8proc_int32_t codePoint = kNone;
        auto const length =
            utf8proc_iterate(bytes, static_cast<utf8proc_ssize_t>(text.size()), &codePoint);
        std::size_t const size = length > 0 ? static_cast<std::size_t>(length) : 1;
        visit(text.substr(0, size), codePoint);
        text.remove_prefix(size);
    }
}

bool IsPrintable(utf8proc_int32_t codePoint) {
    if (codePoint >= ' ' && codePoint <= '~') {
        return true;
    }
    switch (utf8proc_category(codePoint)) {
    case UTF8PROC_CATEGORY_CC:
    case UTF8PROC_CATEGORY_CF:
    case UTF8PROC_CATEGORY_ZL:
    case UTF8PROC_CATEGORY_ZP:
        return false;
    default:
        return codePoint != kNone;
    }
}

void AppendOctal(std::string& text, std::string_view bytes, utf8proc_int32_t /*codePoint*/) {
    for (char const byte : bytes) {
        fmt::format_to(std::back_inserter(text), "\\{:03o}", static_cast<unsigned char>(byte));
    }
}

// JSON escapes a character as one or two units of UTF-16.
void AppendJsonEscape(std::string& escaped, std::string_view bytes, utf8proc_int32_t codePoint) {
    if (codePoint > 0xFFFF) {
        AppendJsonEscape(escaped, bytes, 0xD800 + ((codePoint - 0x10000) >> 10));
        codePoint = 0xDC00 + (codePoint & 0x3FF);
    }
    fmt::format_to(std::back_inserter(escaped), "\\u{:04x}", codePoint);
}

// text with escapes for the characters that isKept rejects.
template <class IsKept, class AppendEscape>
std::string Escaped(std::string_view text, IsKept isKept, AppendEscape appendEscape) {
    std::string result;
    ForEachCharacter(text, [&](std::string_view bytes, utf8proc_int32_t codePoint) {
        if (isKept(codePoint)) {
            result += bytes;
        } else {
            appendEscape(result, bytes, codePoint);
        }
    });
    return result;
}

} // namespace

bool IsPlainText(std::string_view text) {
    bool isPlain = true;
    ForEachCharacter(text, [&](std::string_view /*bytes*/, utf8proc_int32_t codePoint) {
        bool const isControl = utf8proc_category(codePoint) == UTF8PROC_CATEGORY_CC;
        isPlain = isPlain && codePoint != kNone && (codePoint < ' ' || !isControl);
    });
    return isPlain;
}

std::string VisibleText(std::string_view text) {
    return Escaped(text, &IsPrintable, &AppendOctal);
}

std::string WellFormedText(std::string_view text) {
    auto const isCharacter = [](utf8proc_int32_t codePoint) { return codePoint != kNone; };
    return Escaped(text, isCharacter, &AppendOctal);
}

std::string JsonEscapes(std::string_view json) {
    auto const isKept = [](utf8proc_int32_t codePoint) {
        return codePoint == kNone || codePoint == '\n' || IsPrintable(codePoint);
    };
    return Escaped(json, isKept, &AppendJsonEscape);
}

std::size_t DisplayWidth(std::string_view visible) {
    std::size_t width = 0;
    ForEachCharacter(visible, [&](std::string_view /*bytes*/, utf8proc_int32_t codePoint) {
        width += codePoint == kNone ? 1 : static_cast<std::size_t>(utf8proc_charwidth(codePoint));
    });
    return width;
}

std::size_t Widened(std::size_t column, std::string_view visible) {
    constexpr std::size_t kWidest = 40;
    return std::min(std::max(column, DisplayWidth(visible)), kWidest);
}

std::string_view FittingPart(std::string_view visible, std::size_t width) {
    std::size_t end = 0;
    std::size_t next = 0;
    do {
        end = next;
        ++next;
        while (next < visible.size() &&
               (static_cast<unsigned char>(visible[next]) & 0xC0U) == 0x80) {
            ++next;
        }
    } while (next <= visible.size() && DisplayWidth(visible.substr(0, next)) <= width);
    return visible.substr(0, end == 0 ? next : end);
}

std::string Padded(std::string const& visible, std::size_t width) {
    return visible + std::string(width - std::min(DisplayWidth(visible), width), ' ');
}

} // namespace joboptions
