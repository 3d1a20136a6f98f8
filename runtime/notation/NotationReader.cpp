#include "runtime/notation/Notation.h"

#include <charconv>

namespace bibrt {

namespace {

// A collection that is open: what it is, the key that waits for its value, where it was opened.
struct OpenCollection {
    POSObject* fCollection;
    AtomRef fKey;
    std::size_t fOffset;
};

class NotationReader {
public:
    NotationReader(std::string_view text, PlaceListener* listener) noexcept
        : fScanner(text),
          fListener(listener) {}

    Unowned<POSObject> Read();

private:
    bool IsKeyExpected() const noexcept;
    void Take(Token const& token);
    void TakeKey(Token const& token);
    void Close(Token const& token, ContainerType const& type);
    void TellElement(std::size_t offset);
    void Store(Unowned<POSObject> value);
    void Open(Unowned<POSObject> collection, std::size_t offset);
    [[noreturn]] void ThrowUnclosed(Token const& end) const;
    [[noreturn]] void ThrowNoValue(Token const& token) const;

    NotationScanner fScanner;
    PlaceListener* fListener; // may be null
    Vector<OpenCollection> fOpen;
    Unowned<POSObject> fRoot; // holds every other value
};

double ReadNumber(Token const& word) {
    std::string_view digits = word.fText;
    digits.remove_prefix(digits.front() == '+' ? 1 : 0);
    double value = 0;
    auto const [end, fault] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (fault != std::errc()) {
        ThrowFault(word.fOffset, "the number is out of range");
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

Unowned<POSObject> NotationReader::Read() {
    do {
        Token const token = fScanner.Next();
        if (IsKeyExpected()) {
            TakeKey(token);
        } else {
            Take(token);
        }
    } while (!fOpen.empty());
    if (Token const rest = fScanner.Next(); rest.fKind != TokenKind::kEnd) {
        ThrowFault(rest.fOffset, "expected nothing more after the value");
    }
    return std::move(fRoot);
}

bool NotationReader::IsKeyExpected() const noexcept {
    return !fOpen.empty() && !fOpen.back().fKey && IsOfType(fOpen.back().fCollection, gDictType);
}

// Takes what stands in the place of a value.
void NotationReader::Take(Token const& token) {
    switch (token.fKind) {
    case TokenKind::kOpenDict:
        TellElement(token.fOffset);
        Open(Unowned<POSObject>(NewObject<POSDict>()), token.fOffset);
        break;
    case TokenKind::kOpenArray:
        TellElement(token.fOffset);
        Open(Unowned<POSObject>(NewObject<POSArray>()), token.fOffset);
        break;
    case TokenKind::kCloseArray:
        Close(token, gArrayType);
        break;
    case TokenKind::kWord:
    case TokenKind::kText:
        TellElement(token.fOffset);
        Store(ReadScalar(token));
        break;
    case TokenKind::kCloseDict:
    case TokenKind::kEnd:
        ThrowNoValue(token);
    }
}

// Takes what stands in the place of a key.
void NotationReader::TakeKey(Token const& token) {
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
        ThrowFault(token.fOffset, "expected a key or '>'");
    }
}

// Tells of what stands in an array, or alone.
void NotationReader::TellElement(std::size_t offset) {
    bool const isUnderKey = !fOpen.empty() && fOpen.back().fKey.Get();
    if (fListener && !isUnderKey) {
        std::size_t const index = fOpen.empty() ? 0 : CountChildren(*fOpen.back().fCollection);
        fListener->OnElement(fOpen.size(), index, offset);
    }
}

void NotationReader::Store(Unowned<POSObject> value) {
    if (fOpen.empty()) {
        fRoot = std::move(value);
        return;
    }
    OpenCollection& top = fOpen.back();
    AtomRef const key = std::move(top.fKey);
    if (!AddTo(*top.fCollection, key, *value)) {
        throw std::bad_alloc();
    }
    // The collection keeps it alive from here on.
    static_cast<void>(value.release());
}

void NotationReader::Open(Unowned<POSObject> collection, std::size_t offset) {
    POSObject* const opened = collection.get();
    Store(std::move(collection));
    fOpen.push_back({opened, {}, offset});
}

void NotationReader::Close(Token const& token, ContainerType const& type) {
    if (fOpen.empty() || !IsOfType(fOpen.back().fCollection, type) || fOpen.back().fKey) {
        ThrowNoValue(token);
    }
    fOpen.pop_back();
}

void NotationReader::ThrowUnclosed(Token const& end) const {
    NotationPlace const opened = PlaceOf(fScanner.Text(), fOpen.back().fOffset);
    ThrowFault(
        end.fOffset,
        "the %s opened at line %lu, column %lu is not closed",
        NameOf(fOpen.back().fCollection),
        opened.fLine,
        opened.fColumn);
}

// Says what is missing where no value stands.
void NotationReader::ThrowNoValue(Token const& token) const {
    if (fOpen.empty()) {
        ThrowFault(token.fOffset, "expected a value");
    }
    if (BIBStringAtom const* const key = fOpen.back().fKey) {
        ThrowFault(token.fOffset, "expected a value for the key \"%.60s\"", key->Text());
    }
    if (token.fKind == TokenKind::kEnd) {
        ThrowUnclosed(token);
    }
    ThrowFault(token.fOffset, "expected a value or ']'");
}

} // namespace

POSObject* ReadNotation(std::string_view text, PlaceListener* listener) {
    return NotationReader(text, listener).Read().release();
}

} // namespace bibrt
