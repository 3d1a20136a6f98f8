#include "source/FarSearches.h"

#include <cstring>

namespace JoboptionsParserUtils {

namespace {

// The innermost one on this thread.
thread_local FarSearches* gCurrent = nullptr;

// Only the two bytes before a parenthesis decide whether it is escaped.
bool IsEscaped(char const* parenthesis) noexcept {
    return parenthesis[-1] == '\\' && parenthesis[-2] != '\\';
}

char const* FindEndOfString(char const* first) noexcept {
    char const* end = std::strchr(first, ')');
    while (end != nullptr && IsEscaped(end)) {
        end = std::strchr(end + 1, ')');
    }
    return end;
}

} // namespace

FarSearches::FarSearches() noexcept : fOuter(gCurrent) {
    gCurrent = this;
}

FarSearches::~FarSearches() {
    gCurrent = fOuter;
}

template <class Search>
char const* FarSearches::Find(Kind kind, char const* first, Search const& search) {
    return gCurrent != nullptr ? (gCurrent->*kind).From(first, search) : search(first);
}

char const* FarSearches::EndOfString(char const* first) {
    return Find(&FarSearches::fStringEnds, first, &FindEndOfString);
}

char const* FarSearches::EndOfNumber(char const* first) {
    return Find(&FarSearches::fNumberEnds, first, [](char const* from) {
        return std::strpbrk(from, " \n\r\t]>");
    });
}

char const* FarSearches::Point(char const* first) {
    return Find(
        &FarSearches::fPoints, first, [](char const* from) { return std::strchr(from, '.'); });
}

} // namespace JoboptionsParserUtils
