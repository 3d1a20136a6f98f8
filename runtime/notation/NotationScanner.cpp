#include "runtime/notation/NotationScanner.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace bibrt {

namespace {

constexpr std::string_view kBlanks = " \t\n\r\f\v";
constexpr std::string_view kBrackets = "<>[]()%";
constexpr std::string_view kDigits = "0123456789";
constexpr int kMaxByte = 255;
constexpr int kOctalDigits = 3;

bool IsOctal(char c) noexcept {
    return c >= '0' && c <= '7';
}

// Takes the leading digits off text; how many there were.
std::size_t TakeDigits(std::string_view& text) noexcept {
    std::size_t const count = std::min(text.find_first_not_of(kDigits), text.size());
    text.remove_prefix(count);
    return count;
}

bool TakeOneOf(std::string_view& text, std::string_view choices) noexcept {
    bool const isThere = !text.empty() && choices.find(text.front()) != std::string_view::npos;
    text.remove_prefix(isThere ? 1 : 0);
    return isThere;
}

} // namespace

NotationPlace PlaceOf(std::string_view text, std::size_t offset) noexcept {
    NotationPlace place = {1, 1};
    for (std::size_t i = 0; i < offset; ++i) {
        bool const isLineEnd =
            text[i] == '\n' || (text[i] == '\r' && (i + 1 == text.size() || text[i + 1] != '\n'));
        place = isLineEnd ? NotationPlace{place.fLine + 1, 1}
                          : NotationPlace{place.fLine, place.fColumn + 1};
    }
    return place;
}

void ThrowFault(std::size_t offset, char const* format, ...) {
    NotationFault fault = {.fOffset = offset, .fMessage = {}};
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(fault.fMessage, sizeof(fault.fMessage), format, arguments);
    va_end(arguments);
    throw NotationFault(fault);
}

bool IsDelimiter(char c) noexcept {
    return kBlanks.find(c) != std::string_view::npos || kBrackets.find(c) != std::string_view::npos;
}

bool IsPlainWord(std::string_view text) noexcept {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return c > ' ' && c <= '~' && !IsDelimiter(c);
    });
}

bool IsNumber(std::string_view text) noexcept {
    TakeOneOf(text, "+-");
    std::size_t digits = TakeDigits(text);
    if (TakeOneOf(text, ".")) {
        digits += TakeDigits(text);
    }
    if (digits == 0) {
        return false;
    }
    if (TakeOneOf(text, "eE")) {
        TakeOneOf(text, "+-");
        if (TakeDigits(text) == 0) {
            return false;
        }
    }
    return text.empty();
}

void NotationScanner::SkipBlanks() noexcept {
    while (!IsAtEnd()) {
        if (fText[fCursor] == '%') {
            fCursor = std::min(fText.find_first_of("\n\r", fCursor), fText.size());
        } else if (kBlanks.find(fText[fCursor]) != std::string_view::npos) {
            ++fCursor;
        } else {
            return;
        }
    }
}

Token NotationScanner::Next() {
    SkipBlanks();
    if (IsAtEnd()) {
        return {TokenKind::kEnd, fCursor, {}};
    }
    std::size_t const start = fCursor;
    switch (fText[fCursor]) {
    case '<':
        return {TokenKind::kOpenDict, fCursor++, {}};
    case '>':
        return {TokenKind::kCloseDict, fCursor++, {}};
    case '[':
        return {TokenKind::kOpenArray, fCursor++, {}};
    case ']':
        return {TokenKind::kCloseArray, fCursor++, {}};
    case '(':
        return ReadText();
    case ')':
        ThrowFault(start, "')' without a '(' before it");
    default:
        return ReadWord();
    }
}

Token NotationScanner::ReadWord() noexcept {
    std::size_t const start = fCursor;
    while (!IsAtEnd() && !IsDelimiter(fText[fCursor])) {
        ++fCursor;
    }
    return {TokenKind::kWord, start, fText.substr(start, fCursor - start)};
}

Token NotationScanner::ReadText() {
    std::size_t const start = fCursor++;
    std::size_t depth = 1;
    fDecoded.clear();
    while (!IsAtEnd()) {
        char const c = fText[fCursor++];
        if (c == '\\') {
            ReadEscape();
            continue;
        }
        depth += c == '(' ? 1 : 0;
        depth -= c == ')' ? 1 : 0;
        if (depth == 0) {
            return {TokenKind::kText, start, fDecoded};
        }
        fDecoded.push_back(c);
    }
    NotationPlace const opened = PlaceOf(fText, start);
    ThrowFault(
        fCursor,
        "the text opened at line %lu, column %lu is not closed",
        opened.fLine,
        opened.fColumn);
}

// The cursor stands behind the backslash.
void NotationScanner::ReadEscape() {
    static constexpr std::string_view kNames = "()\\nrt";
    static constexpr std::string_view kMeanings = "()\\\n\r\t";
    if (IsAtEnd()) {
        return;
    }
    if (IsOctal(fText[fCursor])) {
        fDecoded.push_back(ReadOctal());
        return;
    }
    std::size_t const which = kNames.find(fText[fCursor]);
    if (which == std::string_view::npos) {
        ThrowFault(fCursor - 1, "unknown escape '\\%c'", fText[fCursor]);
    }
    ++fCursor;
    fDecoded.push_back(kMeanings[which]);
}

char NotationScanner::ReadOctal() {
    std::size_t const start = fCursor;
    int value = 0;
    while (fCursor < start + kOctalDigits && !IsAtEnd() && IsOctal(fText[fCursor])) {
        value = value * 8 + (fText[fCursor++] - '0');
    }
    if (value == 0) {
        ThrowFault(start - 1, "a text cannot hold a zero byte");
    }
    if (value > kMaxByte) {
        ThrowFault(start - 1, "an octal escape goes up to \\377");
    }
    return static_cast<char>(value);
}

} // namespace bibrt
