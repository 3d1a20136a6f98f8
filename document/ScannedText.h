// The bytes of a settings text, and the searches of the format. A zero byte ends every search, and
// searches return kNone if they find nothing. Zero bytes follow the text, so that looking a few
// bytes past a position, or past the end, stays within the buffer.
#pragma once

#include "format/Tokens.h"
#include "pdfsettings/Document.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

namespace pdfsettings::detail {

// Whether byte can be part of a name.
inline bool IsNameByte(char byte) noexcept {
    return !format::kNameEnds.Has(byte);
}

class ScannedText {
public:
    // The result of a search that found nothing.
    static constexpr std::size_t kNone = std::string::npos;

    explicit ScannedText(std::string const& text)
        : fBytes(text + std::string(format::kZerosBehindText, '\0')),
          fSize(text.size()) {}
    ScannedText(ScannedText const&) = delete;
    ScannedText& operator=(ScannedText const&) = delete;

    // The size of the text, without the zero bytes after it.
    std::size_t Size() const noexcept { return fSize; }

    char At(std::size_t offset) const { return fBytes[offset]; }
    bool IsAt(std::size_t offset, std::string_view literal) const noexcept {
        return std::string_view(fBytes).substr(offset).starts_with(literal);
    }
    std::string_view Bytes(Span span) const noexcept {
        return std::string_view(fBytes).substr(span.begin, span.Size());
    }

    // The first byte, or literal, at offset or later.
    std::size_t Find(std::size_t offset, char byte) const noexcept {
        return PlaceOf(std::strchr(fBytes.data() + offset, byte));
    }
    std::size_t FindText(std::size_t offset, char const* literal) const noexcept {
        return PlaceOf(std::strstr(fBytes.data() + offset, literal));
    }

    // The offset after the blanks, line ends and comments at offset.
    std::size_t Skip(std::size_t offset) noexcept {
        while (At(offset) == '%' || format::kBlanks.Has(At(offset))) {
            offset = At(offset) == '%' ? EndOfLine(offset) : offset + 1;
        }
        return offset;
    }

    // The end of the name whose first byte, whatever it is, is at offset.
    std::size_t EndOfName(std::size_t offset) const noexcept { return EndOfWord(offset + 1); }

    // The end of the run of name bytes at offset.
    std::size_t EndOfWord(std::size_t offset) const noexcept {
        while (IsNameByte(At(offset))) {
            ++offset;
        }
        return offset;
    }

    // The ")" that ends the string whose bytes begin at offset.
    std::size_t EndOfString(std::size_t offset) noexcept {
        return PlaceOf(format::EndOfString(fBytes.data() + offset, &fSearches));
    }

    // The token of the number at offset, if it has an end, and whether it has a point.
    struct Number {
        Span fToken;
        bool fHasPoint;
    };
    std::optional<Number> NumberAt(std::size_t offset) noexcept {
        auto const [end, hasPoint] = format::FindNumber(fBytes.data() + offset, &fSearches);
        return end == nullptr ? std::nullopt
                              : std::optional(Number{{offset, PlaceOf(end)}, hasPoint});
    }

    // The first zero byte of the text at offset or later.
    std::size_t ZeroByte(std::size_t offset) noexcept {
        char const* const end = fBytes.data() + fSize;
        char const* const from = fBytes.data() + std::min(offset, fSize);
        return PlaceOf(fZeroBytes.From(from, [end](char const* begin) {
            auto const left = static_cast<std::size_t>(end - begin);
            return static_cast<char const*>(std::memchr(begin, '\0', left));
        }));
    }

    // The end of the line of offset, or of the text.
    std::size_t EndOfLine(std::size_t offset) noexcept {
        return PlaceOf(fLineEnds.From(fBytes.data() + offset, [](char const* from) {
            return from + std::strcspn(from, "\r\n");
        }));
    }

    // The number of blanks that the line of offset begins with; 0 if the line begins too far before
    // offset.
    std::size_t IndentOfLine(std::size_t offset) const noexcept {
        constexpr std::size_t kFar = 1000;
        std::size_t begin = offset;
        while (begin > 0 && offset - begin < kFar && At(begin - 1) != '\r' &&
               At(begin - 1) != '\n') {
            --begin;
        }
        std::size_t const first = fBytes.find_first_not_of(" \t", begin);
        return offset - begin < kFar ? std::min(first, offset) - begin : 0;
    }

    // The indent if offset is the first non-blank of its line, else kNone.
    std::size_t IndentAt(std::size_t offset) const noexcept {
        std::size_t const indent = IndentOfLine(offset);
        bool const isFirst =
            offset == indent || At(offset - indent - 1) == '\r' || At(offset - indent - 1) == '\n';
        return isFirst ? indent : kNone;
    }

    // The number of the line of offset, from 1. CR, LF and CR LF are line ends.
    std::size_t LineOf(std::size_t offset) const noexcept {
        std::size_t line = 1;
        for (std::size_t i = 0; i < std::min(offset, fSize); ++i) {
            bool const isEnd = At(i) == '\n' || (At(i) == '\r' && At(i + 1) != '\n');
            line += isEnd ? 1U : 0U;
        }
        return line;
    }

    // span without trailing blanks and line ends.
    Span WithoutBlanksBehind(Span span) const noexcept {
        while (span.Size() > 0 && format::kBlanks.Has(At(span.end - 1))) {
            --span.end;
        }
        return span;
    }

private:
    std::size_t PlaceOf(char const* found) const noexcept {
        return found == nullptr ? kNone : static_cast<std::size_t>(found - fBytes.data());
    }

    std::string fBytes;
    std::size_t fSize;
    format::FarSearches fSearches;
    format::RepeatedSearch fLineEnds;
    format::RepeatedSearch fZeroBytes;
};

} // namespace pdfsettings::detail
