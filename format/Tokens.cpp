#include "format/Tokens.h"

#include <cstddef>

namespace format {

namespace {

// Only the two bytes before a parenthesis decide whether it is escaped.
bool IsEscaped(char const* parenthesis) noexcept {
    return parenthesis[-1] == '\\' && parenthesis[-2] != '\\';
}

char const* SearchEndOfString(char const* first) noexcept {
    char const* end = std::strchr(first, ')');
    while (end != nullptr && IsEscaped(end)) {
        end = std::strchr(end + 1, ')');
    }
    return end;
}

char const* SearchEndOfNumber(char const* first) noexcept {
    while (*first != '\0' && !kNumberEnds.Has(*first)) {
        ++first;
    }
    return *first == '\0' ? nullptr : first;
}

char const* SearchPoint(char const* first) noexcept {
    return std::strchr(first, '.');
}

NumberToken FindFarNumber(char const* first, FarSearches& searches) noexcept {
    char const* const end = searches.fNumberEnds.From(first, &SearchEndOfNumber);
    char const* const point = searches.fPoints.From(first, &SearchPoint);
    return {end, point != nullptr && point < end};
}

} // namespace

std::string_view FirstLineEnd(std::string_view text) noexcept {
    std::size_t const first = text.find_first_of("\r\n");
    if (first == std::string_view::npos) {
        return "\n";
    }
    std::string_view const end = text.substr(first, 2);
    return end == "\r\n" ? end : end.substr(0, 1);
}

char const* EndOfString(char const* first, FarSearches* searches) noexcept {
    return searches != nullptr ? searches->fStringEnds.From(first, &SearchEndOfString)
                               : SearchEndOfString(first);
}

// Most tokens are short and not worth caching.
NumberToken FindNumber(char const* first, FarSearches* searches) noexcept {
    constexpr std::ptrdiff_t kNear = 32;
    bool hasPoint = false;
    for (char const* end = first; *end != '\0' && end - first < kNear; ++end) {
        if (kNumberEnds.Has(*end)) {
            return {end, hasPoint};
        }
        hasPoint = hasPoint || *end == '.';
    }
    FarSearches own;
    return FindFarNumber(first, searches != nullptr ? *searches : own);
}

} // namespace format
