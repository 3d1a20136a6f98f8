// What the scanner says of faults, and when it gives a text up.
#include "document/DocumentScanner.h"
#include "document/FindingText.h"
#include "format/NumberText.h"

#include <algorithm>
#include <utility>

namespace pdfsettings::detail {

namespace {

constexpr std::size_t kNone = ScannedText::kNone;

// The first of what is passed over between from and the next key: up to the end of the line, of the
// dictionary, or to a comment.
Span StrayIn(ScannedText const& text, std::size_t from, std::size_t slash) {
    std::string_view const passed = text.Bytes({from, slash});
    std::size_t const end =
        std::min({passed.find_first_of("%\r\n", 1), passed.find(">>", 1), passed.size()});
    return text.WithoutBlanksBehind({from, from + end});
}

// Whether a dictionary's end is passed over between two places: no comment, string or hexadecimal
// string holds one.
bool HasEndIn(ScannedText& text, std::size_t from, std::size_t slash) {
    while (from < slash && !text.StandsOn(from, ">>")) {
        char const byte = text.At(from);
        bool const isHexString = byte == '<' && text.At(from + 1) != '<';
        std::size_t const end = byte == '%'   ? text.EndOfLine(from)
                                : byte == '(' ? text.EndOfString(from + 1)
                                : isHexString ? text.Find(from, '>')
                                              : from;
        from = (end == kNone ? from : end) + 1;
    }
    return from < slash;
}

} // namespace

// A turn that leaves the cursor where the turn before left it can only repeat itself.
void DocumentScanner::CheckProgress(std::size_t& last, std::size_t start) {
    if (fCursor != last) {
        last = fCursor;
        return;
    }
    if (fFindings.IsRest(fCursor)) {
        fFindings.BlameRest();
    }
    if (fText.StandsOn(fCursor, format::kKeyword)) {
        NoteKeyword();
    }
    RefuseWithoutEnd(
        Refusal::kInvalidFile,
        "unclosed",
        {start, start + 2},
        "the dictionary has no end: expected >>");
}

// What stands between a value and the next key.
void DocumentScanner::NoteKey(std::size_t from, std::size_t slash) {
    auto const empty = std::exchange(fEmptyDictionary, std::nullopt);
    if (empty) {
        fFindings.WarnAstray("empty-dictionary", *empty, EmptyDictionaryText(fDepth));
        return;
    }
    char const first = fText.At(slash + 1);
    if (!IsNameByte(first) && slash + 1 < fText.Size()) {
        fFindings.Warn(
            "odd-key",
            {slash, slash + 2},
            "a key begins with a blank or a delimiter: is its name missing?");
    }
    if (from == slash) {
        return;
    }
    if (fText.StandsOn(from, format::kKeyword)) {
        NoteKeyword();
        return;
    }
    Span const stray = StrayIn(fText, from, slash);
    bool const isRest = fFindings.IsRest(from);
    bool const hasEnd = HasEndIn(fText, from, slash);
    if (isRest && hasEnd) {
        fFindings.BlameRest();
    } else if (hasEnd) {
        fFindings.WarnAstray(
            "stray", stray, StrayBeforeEndText(fText.Bytes(stray), NameTakenForValue()));
    } else if (!isRest) {
        fFindings.Warn("stray", stray, StrayText(fText.Bytes(stray), NameTakenForValue()));
    }
}

// The keyword stands at the cursor, and the settings have not ended yet.
void DocumentScanner::NoteKeyword() {
    fFindings.WarnAstray(
        "unclosed",
        {fCursor, fCursor + format::kKeyword.size()},
        "setalembicorparams stands inside a dictionary: a >> is missing before it");
}

// The name that the last entry of the dictionary has as its value; empty for a value of another
// kind.
std::string_view DocumentScanner::NameTakenForValue() const {
    bool const isName = !fEntries.empty() && fEntries.back().depth == fDepth &&
                        fText.At(fEntries.back().value.begin) == '/';
    return isName ? fText.Bytes(fEntries.back().value) : std::string_view();
}

// What stands between the last value and the end, with no further key in the text.
void DocumentScanner::NoteLeftover() {
    fEmptyDictionary.reset();
    bool const isEnd = fText.At(fCursor) == '\0' || fText.At(fCursor) == '>' ||
                       fText.StandsOn(fCursor, format::kKeyword);
    if (isEnd) {
        return;
    }
    if (fFindings.IsRest(fCursor)) {
        fFindings.BlameRest();
        return;
    }
    Span const stray = StrayIn(fText, fCursor, fText.EndOfLine(fCursor));
    fFindings.WarnAstray(
        "stray", stray, StrayBeforeEndText(fText.Bytes(stray), NameTakenForValue()));
    fFindings.NoteRest(fCursor);
}

void DocumentScanner::NoteNumber(Span token, Span number, bool hasPoint) {
    std::string_view const own = fText.Bytes(number);
    if (own.empty()) {
        Span const sign{number.begin, number.begin + 1};
        fFindings.WarnOfRest("no-number", sign, number.end, "a sign without digits is read as 0");
        return;
    }
    bool const isReal = own.find('.') != std::string_view::npos;
    auto const alone = format::ScanNumber(own);
    auto const found = format::ScanNumber(fText.Bytes(token), hasPoint);
    if (!isReal && hasPoint && alone.fValue != found.fValue) {
        fFindings.WarnOfRest("far-point", token, number.end, FarPointText(own, found.fValue));
    } else if (!isReal && !hasPoint && IsInexact(own, found.fValue)) {
        fFindings.Warn("rounded", number, InexactText(own, found.fValue));
    } else if (!isReal && IsOctal(own) && !IsNameByte(fText.At(number.end))) {
        fFindings.Warn("octal", number, OctalText(own, found.fValue));
    }
}

// So many levels are read on every thread.
void DocumentScanner::NoteDepth() {
    constexpr std::size_t kSafeDepth = 1000;
    if (fDepth == kSafeDepth + 1) {
        fFindings.Warn(
            "nesting",
            {fCursor, fCursor + 1},
            "nested deeper than 1000 levels: whether this is read depends on the stack");
    }
}

void DocumentScanner::NoteZeroHead() {
    if (fText.Size() > 0) {
        fFindings.Warn(
            "zero-byte",
            {0, 1},
            "a zero byte begins the text, and nothing of it is read: is it in UTF-16?");
    }
}

// Here as everywhere, a zero byte ends the search.
void DocumentScanner::NoteOpenString(std::size_t begin) {
    std::size_t const zero = fText.ZeroByte(begin);
    if (zero != kNone) {
        fFindings.WarnAstray("zero-byte", {zero, zero + 1}, kZeroByteText);
    } else {
        fFindings.WarnAstray(
            "open-string",
            {begin - 1, fText.EndOfLine(begin)},
            "the string has no end: expected ); the entry is lost");
    }
}

void DocumentScanner::NoteString(Span bytes) {
    std::string_view const string = fText.Bytes(bytes);
    Span const whole{bytes.begin - 1, bytes.end + 1};
    bool const isNested = HasBracket(string);
    if (LooksLikeEntries(string) || (isNested && string.find('/') != std::string_view::npos)) {
        fFindings.WarnAstray(
            "runaway-string",
            {whole.begin, std::min(fText.EndOfLine(whole.begin), whole.end)},
            "the string goes on over what looks like settings: is a ) missing?");
    } else if (isNested) {
        std::size_t const end = fText.EndOfString(whole.end);
        bool const isClosed = end != kNone && end < fText.EndOfLine(whole.begin);
        fFindings.WarnOfRest(
            "nested-brackets",
            {whole.begin, isClosed ? end + 1 : whole.end},
            whole.end,
            NestedBracketsText());
    } else if (EndsInOddBackslashes(string)) {
        fFindings.Warn(
            "backslashes",
            whole,
            "only a backslash alone escapes a ): behind three of them the string ends");
    }
}

void DocumentScanner::NoteHexString(Span bytes) {
    std::string_view const text = fText.Bytes(bytes);
    Span const whole{bytes.begin - 1, bytes.end + 1};
    if (text.find('/') != std::string_view::npos) {
        fFindings.WarnAstray(
            "runaway-hexstring",
            {whole.begin, std::min(fText.EndOfLine(whole.begin), whole.end)},
            "the hexadecimal string goes on over a / that looks like a key's: is a > missing?");
    } else if (text.find_first_not_of("0123456789abcdefABCDEF \t\r\n\f") != text.npos) {
        fFindings.Warn(
            "bad-hex", whole, "a hexadecimal string holds digits 0 to 9 and A to F only");
    }
}

// What follows a value without a blank is no part of it, though it looks so.
void DocumentScanner::NoteWhatIsStuck(Span value) {
    char const first = fText.At(value.begin);
    char const next = fText.At(value.end);
    bool const isStuck = IsNameByte(next) || (first == '(' && next == ')');
    if (value.Size() == 0 || !isStuck || fFindings.IsRest(value.end)) {
        return;
    }
    Span const token{value.begin, next == ')' ? value.end + 1 : fText.EndOfWord(value.end)};
    fFindings.WarnOfRest(
        "stuck", token, value.end, StuckText(fText.Bytes(token), fText.Bytes(value)));
}

void DocumentScanner::NoteUnknownValue() {
    char const first = fText.At(fCursor);
    Span const key = fEntries.back().key;
    std::size_t const end = std::max(fText.EndOfWord(fCursor), fCursor + 1);
    if (key.Size() == 0 && first == '>') {
        RefuseUnknownValue(
            "open-array", {fOpenArray, fOpenArray + 1}, "the array has no end: expected ]");
    }
    if (first == '>' || first == ']') {
        RefuseUnknownValue("missing-value", key, MissingValueText(fText.Bytes(key)));
    }
    std::string const message = UnknownValueText(fText.Bytes({fCursor, end}));
    RefuseUnknownValue("unknown-value", {fCursor, end}, message);
}

void DocumentScanner::NoteEndOfDictionary() {
    if (fText.StandsOn(fCursor, ">>")) {
        return;
    }
    Span const end = Within({fCursor, fCursor + 2});
    if (fFindings.IsRest(fCursor)) {
        fFindings.BlameRest();
        return;
    }
    fFindings.WarnOfRest("single-close", end, fCursor + 2, SingleCloseText(fText.Bytes(end)));
    fFindings.BlameRest();
}

Span DocumentScanner::Within(Span span) const noexcept {
    return {std::min(span.begin, fText.Size()), std::min(span.end, fText.Size())};
}

// Whether the settings ended between the fault that led astray and the cursor: then nothing that
// stands here is the author's mistake.
bool DocumentScanner::HasPassedEnd() const noexcept {
    auto const astray = fFindings.GoneAstrayAt();
    return astray && fText.Bytes({*astray, std::max(*astray, fCursor)}).find(format::kKeyword) !=
                         std::string_view::npos;
}

void DocumentScanner::Refuse(Refusal why, char const* id, Span span, std::string const& message) {
    fFindings.Refuse(id, span, message, FindingLog::Blame::kAstray);
    throw Refused{why};
}

// For a search that a zero byte may have ended.
void DocumentScanner::RefuseWithoutEnd(
    Refusal why, char const* id, Span span, std::string const& message) {
    std::size_t const zero = fText.ZeroByte(span.begin);
    if (zero != kNone) {
        Refuse(why, "zero-byte", {zero, zero + 1}, kZeroByteText);
    }
    Refuse(why, id, span, message);
}

void DocumentScanner::RefuseUnknownValue(char const* id, Span span, std::string const& message) {
    bool const isRest = fFindings.IsRest(fCursor);
    auto const blame = HasPassedEnd() ? FindingLog::Blame::kAstray
                       : isRest       ? FindingLog::Blame::kRest
                                      : FindingLog::Blame::kNothing;
    fFindings.Refuse(id, span, message, blame);
    throw Refused{Refusal::kUnknownValue};
}

} // namespace pdfsettings::detail
