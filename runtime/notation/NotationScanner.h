// The tokens of the object notation.
//
// A dictionary stands between < and >, an array between [ and ]. A word ends at a blank or one of
// <>[]()%. A text stands in round brackets, which nest, with the escapes \( \) \\ \n \r \t and \ddd
// (one to three octal digits). A comment goes from % to the end of the line.
#pragma once

#include "runtime/objects/Memory.h"

#include <string_view>

namespace bibrt {

// A fault in a text and where it lies; the message is cut short if need be.
struct NotationFault {
    std::size_t fOffset;
    char fMessage[160];
};

// Line and column of a place, both counted from 1; the column in bytes.
struct NotationPlace {
    unsigned long fLine;
    unsigned long fColumn;
};
NotationPlace PlaceOf(std::string_view text, std::size_t offset) noexcept;

// Throws a NotationFault with a message made as printf makes it.
[[noreturn, gnu::format(printf, 2, 3)]] void
ThrowFault(std::size_t offset, char const* format, ...);

// Whether c ends a word. Whether all of text can stand as a word.
bool IsDelimiter(char c) noexcept;
bool IsPlainWord(std::string_view text) noexcept;

// Whether text has the form of a number: a sign, digits with at most one point, an exponent.
bool IsNumber(std::string_view text) noexcept;

enum class TokenKind { kEnd, kOpenDict, kCloseDict, kOpenArray, kCloseArray, kWord, kText };

// fText is valid until the next token is read.
struct Token {
    TokenKind fKind;
    std::size_t fOffset;
    std::string_view fText; // of a word or a text, without brackets and escapes
};

class NotationScanner {
public:
    explicit NotationScanner(std::string_view text) noexcept : fText(text) {}

    // The next token. Throws NotationFault and std::bad_alloc.
    Token Next();

    std::string_view Text() const noexcept { return fText; }

private:
    void SkipBlanks() noexcept;
    Token ReadWord() noexcept;
    Token ReadText();
    void ReadEscape();
    char ReadOctal();
    bool IsAtEnd() const noexcept { return fCursor == fText.size(); }

    std::string_view fText;
    std::size_t fCursor = 0;
    String fDecoded; // of the last text
};

} // namespace bibrt
