#include "document/ScannedText.h"

#include <algorithm>
#include <cstring>

namespace pdfsettings::detail {

namespace {

// A scan may step over the first byte behind the text and then looks at two more.
constexpr std::size_t kZerosBehind = 4;

constexpr std::string_view kSkipped = "\t\n\r ";
constexpr std::string_view kEndOfName("\0\t\n\f\r ()<>[]{}/%", 16);

std::size_t PlaceIn(std::string const& bytes, char const* found) noexcept {
    return found == nullptr ? ScannedText::kNone : static_cast<std::size_t>(found - bytes.data());
}

// Only the two bytes before a parenthesis decide whether it is escaped. Before the first byte of a
// string stands its own parenthesis.
char const* FindEndOfString(char const* first) noexcept {
    char const* end = std::strchr(first, ')');
    while (end != nullptr && end[-1] == '\\' && end[-2] != '\\') {
        end = std::strchr(end + 1, ')');
    }
    return end;
}

} // namespace

bool IsNameByte(char byte) noexcept {
    return kEndOfName.find(byte) == std::string_view::npos;
}

ScannedText::ScannedText(std::string const& text)
    : fBytes(text + std::string(kZerosBehind, '\0')),
      fSize(text.size()) {}

bool ScannedText::StandsOn(std::size_t offset, std::string_view literal) const noexcept {
    return std::string_view(fBytes).substr(offset).starts_with(literal);
}

std::string_view ScannedText::Bytes(Span span) const noexcept {
    return std::string_view(fBytes).substr(span.begin, span.Size());
}

std::size_t ScannedText::Find(std::size_t offset, char byte) const noexcept {
    return PlaceIn(fBytes, std::strchr(fBytes.data() + offset, byte));
}

std::size_t ScannedText::FindText(std::size_t offset, char const* literal) const noexcept {
    return PlaceIn(fBytes, std::strstr(fBytes.data() + offset, literal));
}

std::size_t ScannedText::Skip(std::size_t offset) noexcept {
    while (At(offset) == '%' || kSkipped.find(At(offset)) != std::string_view::npos) {
        offset = At(offset) == '%' ? EndOfLine(offset) : offset + 1;
    }
    return offset;
}

std::size_t ScannedText::EndOfName(std::size_t offset) const noexcept {
    return EndOfWord(offset + 1);
}

std::size_t ScannedText::EndOfWord(std::size_t offset) const noexcept {
    while (IsNameByte(At(offset))) {
        ++offset;
    }
    return offset;
}

std::size_t ScannedText::EndOfString(std::size_t offset) noexcept {
    return PlaceIn(fBytes, fStringEnds.From(fBytes.data() + offset, &FindEndOfString));
}

std::size_t ScannedText::EndOfNumber(std::size_t offset) noexcept {
    return PlaceIn(fBytes, fNumberEnds.From(fBytes.data() + offset, [](char const* from) {
        return std::strpbrk(from, " \n\r\t]>");
    }));
}

std::size_t ScannedText::Point(std::size_t offset) noexcept {
    return PlaceIn(fBytes, fPoints.From(fBytes.data() + offset, [](char const* from) {
        return std::strchr(from, '.');
    }));
}

std::size_t ScannedText::ZeroByte(std::size_t offset) noexcept {
    char const* const end = fBytes.data() + fSize;
    char const* const from = fBytes.data() + std::min(offset, fSize);
    return PlaceIn(fBytes, fZeroBytes.From(from, [end](char const* begin) {
        auto const left = static_cast<std::size_t>(end - begin);
        return static_cast<char const*>(std::memchr(begin, '\0', left));
    }));
}

std::size_t ScannedText::EndOfLine(std::size_t offset) noexcept {
    return PlaceIn(fBytes, fLineEnds.From(fBytes.data() + offset, [](char const* from) {
        return from + std::strcspn(from, "\r\n");
    }));
}

Span ScannedText::WithoutBlanksBehind(Span span) const noexcept {
    while (span.Size() > 0 && kSkipped.find(At(span.end - 1)) != std::string_view::npos) {
        --span.end;
    }
    return span;
}

} // namespace pdfsettings::detail
