#include "runtime/notation/Notation.h"

#include "format/FloatFromChars.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace bibrt {

namespace {

constexpr std::string_view kDigits = "0123456789";
constexpr int kMaxByte = 255;
constexpr int kOctalDigits = 3;

bool IsOctal(char c) noexcept {
    return c >= '0' && c <= '7';
}

// Removes the leading digits from text. Returns their number.
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

// Throws a NotationError with a message in the format of printf.
[[noreturn, gnu::format(printf, 2, 3)]] void ThrowAt(std::size_t offset, char const* format, ...) {
    NotationError error = {.fOffset = offset, .fMessage = {}};
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(error.fMessage, sizeof(error.fMessage), format, arguments);
    va_end(arguments);
    throw NotationError(error);
}

bool IsBlank(char c) noexcept {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool IsDelimiter(char c) noexcept {
    return IsBlank(c) || c == '<' || c == '>' || c == '[' || c == ']' || c == '(' || c == ')' ||
           c == '%';
}

enum class TokenKind { kEnd, kOpenDict, kCloseDict, kOpenArray, kCloseArray, kWord, kText };

// fText is valid until the next token is read.
struct Token {
    TokenKind fKind;
    std::size_t fOffset;
    std::string_view fText; // of a string, unescaped and without parentheses
};

class NotationScanner {
public:
    explicit NotationScanner(std::string_view text) noexcept : fText(text) {}

    // The next token. Throws NotationError and std::bad_alloc.
    Token Next() {
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
            ThrowAt(start, "')' without a '(' before it");
        default:
            return ReadWord();
        }
    }

    std::string_view Text() const noexcept { return fText; }

private:
    bool IsAtEnd() const noexcept { return fCursor == fText.size(); }

    void SkipBlanks() noexcept {
        while (!IsAtEnd()) {
            if (fText[fCursor] == '%') {
                fCursor = std::min(fText.find_first_of("\n\r", fCursor), fText.size());
            } else if (IsBlank(fText[fCursor])) {
                ++fCursor;
            } else {
                return;
            }
        }
    }

    Token ReadWord() noexcept {
        std::size_t const start = fCursor;
        while (!IsAtEnd() && !IsDelimiter(fText[fCursor])) {
            ++fCursor;
        }
        return {TokenKind::kWord, start, fText.substr(start, fCursor - start)};
    }

    Token ReadText() {
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
        ThrowAt(
            fCursor,
            "the text opened at line %lu, column %lu is not closed",
            opened.fLine,
            opened.fColumn);
    }

    // REQUIRES: the cursor is after the backslash.
    void ReadEscape() {
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
            ThrowAt(fCursor - 1, "unknown escape '\\%c'", fText[fCursor]);
        }
        ++fCursor;
        fDecoded.push_back(kMeanings[which]);
    }

    char ReadOctal() {
        std::size_t const start = fCursor;
        int value = 0;
        while (fCursor < start + kOctalDigits && !IsAtEnd() && IsOctal(fText[fCursor])) {
            value = value * 8 + (fText[fCursor++] - '0');
        }
        if (value == 0) {
            ThrowAt(start - 1, "a text cannot contain a zero byte");
        }
        if (value > kMaxByte) {
            ThrowAt(start - 1, "an octal escape goes up to \\377");
        }
        return static_cast<char>(value);
    }

    std::string_view fText;
    std::size_t fCursor = 0;
    String fDecoded; // of the last quoted text
};

// An open collection, the key that awaits its value, and the offset of its opening bracket.
struct OpenCollection {
    POSObject* fCollection;
    AtomRef fKey;
    std::size_t fOffset;
};

double ReadNumber(Token const& word) {
    std::string_view digits = word.fText;
    digits.remove_prefix(digits.front() == '+' ? 1 : 0);
    double value = 0;
    auto const [end, error] = format::FloatFromChars(digits, value);
    if (error != std::errc()) {
        ThrowAt(word.fOffset, "the number is out of range");
    }
    return value;
}

Unowned<POSObject> ReadScalar(Token const& token) {
    if (token.fKind == TokenKind::kWord && IsNumber(token.fText)) {
        return Unowned<POSObject>(NewObject<POSNumber>(ReadNumber(token)));
    }
    return Unowned<POSObject>(MakeString(token.fText));
}

char const* NameOf(POSObject const* collection) noexcept {
    return IsOfType(collection, gDictType) ? "dictionary" : "array";
}

class NotationReader {
public:
    NotationReader(std::string_view text, PlaceListener* listener) noexcept
        : fScanner(text),
          fListener(listener) {}

    Unowned<POSObject> Read() {
        do {
            Token const token = fScanner.Next();
            if (IsKeyExpected()) {
                TakeKey(token);
            } else {
                Take(token);
            }
        } while (!fOpen.empty());
        if (Token const rest = fScanner.Next(); rest.fKind != TokenKind::kEnd) {
            ThrowAt(rest.fOffset, "expected nothing more after the value");
        }
        return std::move(fRoot);
    }

private:
    bool IsKeyExpected() const noexcept {
        return !fOpen.empty() && !fOpen.back().fKey &&
               IsOfType(fOpen.back().fCollection, gDictType);
    }

    // Handles a token where a value is expected.
    void Take(Token const& token) {
        switch (token.fKind) {
        case TokenKind::kOpenDict:
            ReportElement(token.fOffset);
            Open(Unowned<POSObject>(NewObject<POSDict>()), token.fOffset);
            break;
        case TokenKind::kOpenArray:
            ReportElement(token.fOffset);
            Open(Unowned<POSObject>(NewObject<POSArray>()), token.fOffset);
            break;
        case TokenKind::kCloseArray:
            Close(token, gArrayType);
            break;
        case TokenKind::kWord:
        case TokenKind::kText:
            ReportElement(token.fOffset);
            Store(ReadScalar(token));
            break;
        case TokenKind::kCloseDict:
        case TokenKind::kEnd:
            ThrowNoValue(token);
        }
    }

    // Handles a token where a key is expected.
    void TakeKey(Token const& token) {
        switch (token.fKind) {
        case TokenKind::kWord:
        case TokenKind::kText:
            fOpen.back().fKey = AtomRef(InternText(token.fText));
            if (fListener) {
                fListener->OnKey(fOpen.size(), token.fText, token.fOffset);
            }
            break;
        case TokenKind::kCloseDict:
            Close(token, gDictType);
            break;
        case TokenKind::kEnd:
            ThrowUnclosed(token);
        default:
            ThrowAt(token.fOffset, "expected a key or '>'");
        }
    }

    // Reports the position of an element of an array, or of the root.
    void ReportElement(std::size_t offset) {
        bool const isUnderKey = !fOpen.empty() && fOpen.back().fKey.Get();
        if (fListener && !isUnderKey) {
            std::size_t const index = fOpen.empty() ? 0 : CountChildren(*fOpen.back().fCollection);
            fListener->OnElement(fOpen.size(), index, offset);
        }
    }

    void Store(Unowned<POSObject> value) {
        if (fOpen.empty()) {
            fRoot = std::move(value);
            return;
        }
        OpenCollection& top = fOpen.back();
        AtomRef const key = std::move(top.fKey);
        if (!AddTo(*top.fCollection, key, *value)) {
            throw std::bad_alloc();
        }
        // Now owned by its collection.
        static_cast<void>(value.release());
    }

    void Open(Unowned<POSObject> collection, std::size_t offset) {
        POSObject* const opened = collection.get();
        Store(std::move(collection));
        fOpen.push_back({opened, {}, offset});
    }

    void Close(Token const& token, ContainerType const& type) {
        if (fOpen.empty() || !IsOfType(fOpen.back().fCollection, type) || fOpen.back().fKey) {
            ThrowNoValue(token);
        }
        fOpen.pop_back();
    }

    [[noreturn]] void ThrowUnclosed(Token const& end) const {
        NotationPlace const opened = PlaceOf(fScanner.Text(), fOpen.back().fOffset);
        ThrowAt(
            end.fOffset,
            "the %s opened at line %lu, column %lu is not closed",
            NameOf(fOpen.back().fCollection),
            opened.fLine,
            opened.fColumn);
    }

    // Throws an error that says what the value is missing for.
    [[noreturn]] void ThrowNoValue(Token const& token) const {
        if (fOpen.empty()) {
            ThrowAt(token.fOffset, "expected a value");
        }
        if (BIBStringAtom const* const key = fOpen.back().fKey) {
            ThrowAt(token.fOffset, "expected a value for the key \"%.60s\"", key->Text());
        }
        if (token.fKind == TokenKind::kEnd) {
            ThrowUnclosed(token);
        }
        ThrowAt(token.fOffset, "expected a value or ']'");
    }

    NotationScanner fScanner;
    PlaceListener* fListener; // may be null
    Vector<OpenCollection> fOpen;
    Unowned<POSObject> fRoot; // owns all other values
};

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

POSObject* ReadNotation(std::string_view text, PlaceListener* listener) {
    return NotationReader(text, listener).Read().release();
}

} // namespace bibrt
