#include "document/ScannedText.h"

#include <algorithm>
#include <cstring>

namespace pdfsettings::detail {

namespace {

std::size_t PlaceIn(std::string const& bytes, char const* found) noexcept {
    return found == nullptr ? ScannedText::kNone : static_cast<std::size_t>(found - bytes.data());
}

} // namespace

ScannedText::ScannedText(std::string const& text)
    : fBytes(text + std::string(format::kZerosBehindText, '\0')),
      fSize(text.size()) {}

std::size_t ScannedText::Find(std::size_t offset, char byte) const noexcept {
    return PlaceIn(fBytes, std::strchr(fBytes.data() + offset, byte));
}

std::size_t ScannedText::FindText(std::size_t offset, char const* literal) const noexcept {
    return PlaceIn(fBytes, std::strstr(fBytes.data() + offset, literal));
}

std::size_t ScannedText::Skip(std::size_t offset) noexcept {
    while (At(offset) == '%' || format::kBlanks.Has(At(offset))) {
        offset = At(offset) == '%' ? EndOfLine(offset) : offset + 1;
    }
    return offset;
}

std::size_t ScannedText::EndOfWord(std::size_t offset) const noexcept {
    while (IsNameByte(At(offset))) {
        ++offset;
    }
    return offset;
}

std::size_t ScannedText::EndOfString(std::size_t offset) noexcept {
    return PlaceIn(fBytes, format::EndOfString(fBytes.data() + offset, &fSearches));
}

std::optional<ScannedText::Number> ScannedText::NumberAt(std::size_t offset) noexcept {
    auto const [end, hasPoint] = format::FindNumber(fBytes.data() + offset, &fSearches);
    return end == nullptr ? std::nullopt
                          : std::optional(Number{{offset, PlaceIn(fBytes, end)}, hasPoint});
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
    while (span.Size() > 0 && format::kBlanks.Has(At(span.end - 1))) {
        --span.end;
    }
    return span;
}

} // namespace pdfsettings::detail
