// The bytes of a settings text, and the searches that the format is made of.
//
// A zero byte ends every search. Behind the text stand zero bytes, so that a look at what follows a
// place in it, or at its end, is always one into the buffer.
#pragma once

#include "format/Tokens.h"
#include "pdfsettings/Document.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

namespace pdfsettings::detail {

// Whether a name goes on with that byte.
inline bool IsNameByte(char byte) noexcept {
    return !format::kNameEnds.Has(byte);
}

class ScannedText {
public:
    // The result of a search without success.
    static constexpr std::size_t kNone = std::string::npos;

    explicit ScannedText(std::string const& text)
        : fBytes(text + std::string(format::kZerosBehindText, '\0')),
          fSize(text.size()) {}
    ScannedText(ScannedText const&) = delete;
    ScannedText& operator=(ScannedText const&) = delete;

    // Without the zero bytes behind it.
    std::size_t Size() const noexcept { return fSize; }

    char At(std::size_t offset) const { return fBytes[offset]; }
    bool StandsOn(std::size_t offset, std::string_view literal) const noexcept {
        return std::string_view(fBytes).substr(offset).starts_with(literal);
    }
    std::string_view Bytes(Span span) const noexcept {
        return std::string_view(fBytes).substr(span.begin, span.Size());
    }

    // The first place from offset on of a byte, or of a literal.
    std::size_t Find(std::size_t offset, char byte) const noexcept {
        return PlaceOf(std::strchr(fBytes.data() + offset, byte));
    }
    std::size_t FindText(std::size_t offset, char const* literal) const noexcept {
        return PlaceOf(std::strstr(fBytes.data() + offset, literal));
    }

    // Behind the blanks, line ends and comments at offset.
    std::size_t Skip(std::size_t offset) noexcept {
        while (At(offset) == '%' || format::kBlanks.Has(At(offset))) {
            offset = At(offset) == '%' ? EndOfLine(offset) : offset + 1;
        }
        return offset;
    }

    // Behind the name whose first byte, whatever it is, stands at offset.
    std::size_t EndOfName(std::size_t offset) const noexcept { return EndOfWord(offset + 1); }

    // Behind the run of bytes at offset that a name may have.
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

    // The token of the number at offset, if it has an end, and whether there is a point in it.
    struct Number {
        Span fToken;
        bool fHasPoint;
    };
    std::optional<Number> NumberAt(std::size_t offset) noexcept {
        auto const [end, hasPoint] = format::FindNumber(fBytes.data() + offset, &fSearches);
        return end == nullptr ? std::nullopt
                              : std::optional(Number{{offset, PlaceOf(end)}, hasPoint});
    }

    // The zero byte of the text at offset or behind it.
    std::size_t ZeroByte(std::size_t offset) noexcept {
        char const* const end = fBytes.data() + fSize;
        char const* const from = fBytes.data() + std::min(offset, fSize);
        return PlaceOf(fZeroBytes.From(from, [end](char const* begin) {
            auto const left = static_cast<std::size_t>(end - begin);
            return static_cast<char const*>(std::memchr(begin, '\0', left));
        }));
    }

    // Where the line of offset ends, or the text does.
    std::size_t EndOfLine(std::size_t offset) noexcept {
        return PlaceOf(fLineEnds.From(fBytes.data() + offset, [](char const* from) {
            return from + std::strcspn(from, "\r\n");
        }));
    }

    // How many blanks begin the line of offset; none where the line begins too far before it.
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

    // The same if what stands at offset is the first of its line, else kNone.
    std::size_t IndentAt(std::size_t offset) const noexcept {
        std::size_t const indent = IndentOfLine(offset);
        bool const isFirst =
            offset == indent || At(offset - indent - 1) == '\r' || At(offset - indent - 1) == '\n';
        return isFirst ? indent : kNone;
    }

    // The number of the line of offset, from 1; CR, LF and CR LF end a line alike.
    std::size_t LineOf(std::size_t offset) const noexcept {
        std::size_t line = 1;
        for (std::size_t i = 0; i < std::min(offset, fSize); ++i) {
            bool const isEnd = At(i) == '\n' || (At(i) == '\r' && At(i + 1) != '\n');
            line += isEnd ? 1U : 0U;
        }
        return line;
    }

    // span without the blanks and line ends at its end.
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
