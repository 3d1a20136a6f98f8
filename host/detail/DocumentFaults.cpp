// What the scanner says of faults, and when it gives a text up.
#include "host/detail/DocumentScanner.h"
#include "host/detail/FaultText.h"
#include "platform/NumberText.h"

#include <algorithm>
#include <utility>

namespace pdfsettings::detail {

namespace {

constexpr std::size_t kNone = ScannedText::kNone;

// The first of what is passed over between from and the next key: up to the end of the line, of the
// dictionary, or to a comment.
Span StrayIn(ScannedText const& text, std::size_t from, std::size_t slash) {
    std::size_t const found = text.Bytes({from, slash}).find_first_of(">%\r\n", 1);
    return text.WithoutBlanksBehind({from, found == kNone ? slash : from + found});
}

} // namespace

// A turn that leaves the cursor where the turn before left it can only repeat itself.
void DocumentScanner::CheckProgress(std::size_t& last, std::size_t start) {
    if (fCursor != last) {
        last = fCursor;
        return;
    }
    if (fFaults.IsRest(fCursor)) {
        fFaults.BlameRest();
    }
    if (fText.StandsOn(fCursor, kKeyword)) {
        NoteKeyword();
    }
    Refuse(
        Refusal::kInvalidFile,
        "unclosed",
        {start, start + 2},
        "the dictionary has no end: expected >>");
}

// What stands between a value and the next key.
void DocumentScanner::NoteKey(std::size_t from, std::size_t slash) {
    auto const empty = std::exchange(fEmptyDictionary, std::nullopt);
    if (empty) {
        fFaults.WarnAstray("empty-dictionary", *empty, EmptyDictionaryText(fDepth));
        return;
    }
    char const first = fText.At(slash + 1);
    if (!IsNameByte(first) && first != '\0') {
        fFaults.Warn(
            "odd-key",
            {slash, slash + 2},
            "a key begins with a blank or a delimiter: is its name missing?");
    }
    if (from == slash) {
        return;
    }
    if (fText.StandsOn(from, kKeyword)) {
        NoteKeyword();
        return;
    }
    Span const stray = StrayIn(fText, from, slash);
    bool const isRest = fFaults.IsRest(from);
    bool const hasEnd = fText.Bytes({from, slash}).find('>') != std::string_view::npos;
    if (isRest && hasEnd) {
        fFaults.BlameRest();
    } else if (hasEnd) {
        fFaults.WarnAstray(
            "stray", stray, StrayBeforeEndText(fText.Bytes(stray), NameTakenForValue()));
    } else if (!isRest) {
        fFaults.Warn("stray", stray, StrayText(fText.Bytes(stray), NameTakenForValue()));
    }
}

// The keyword stands at the cursor, and the settings have not ended yet.
void DocumentScanner::NoteKeyword() {
    fFaults.WarnAstray(
        "unclosed",
        {fCursor, fCursor + kKeyword.size()},
        "setalembicorparams stands inside a dictionary: a >> is missing before it");
}

// The name that the last entry has as its value; empty for a value of another kind.
std::string_view DocumentScanner::NameTakenForValue() const {
    bool const isName = !fEntries.empty() && fText.At(fEntries.back().value.begin) == '/';
    return isName ? fText.Bytes(fEntries.back().value) : std::string_view();
}

// What stands between the last value and the end, with no further key in the text.
void DocumentScanner::NoteLeftover() {
    fEmptyDictionary.reset();
    bool const isEnd =
        fText.At(fCursor) == '\0' || fText.At(fCursor) == '>' || fText.StandsOn(fCursor, kKeyword);
    if (isEnd) {
        return;
    }
    if (fFaults.IsRest(fCursor)) {
        fFaults.BlameRest();
        return;
    }
    std::size_t const end = std::min(fText.Find(fCursor, '>'), fText.EndOfLine(fCursor));
    Span const stray = fText.WithoutBlanksBehind({fCursor, end});
    fFaults.WarnAstray("stray", stray, StrayBeforeEndText(fText.Bytes(stray), NameTakenForValue()));
}

void DocumentScanner::NoteNumber(Span token, Span number, bool hasPoint) {
    std::string_view const own = fText.Bytes(number);
    if (own.empty()) {
        Span const sign{number.begin, number.begin + 1};
        fFaults.WarnOfRest("no-number", sign, number.end, "a sign without digits is read as 0");
        return;
    }
    bool const isReal = own.find('.') != std::string_view::npos;
    auto const alone = platform::ScanNumber(own);
    auto const found = platform::ScanNumber(fText.Bytes(token), hasPoint);
    if (!isReal && hasPoint && alone.fValue != found.fValue) {
        fFaults.Warn("far-point", token, FarPointText(own, found.fValue));
    } else if (!isReal && IsOctal(own) && !IsNameByte(fText.At(number.end))) {
        fFaults.Warn("octal", number, OctalText(own, found.fValue));
    }
}

void DocumentScanner::NoteString(Span bytes) {
    if (LooksLikeEntries(fText.Bytes(bytes))) {
        fFaults.WarnAstray(
            "runaway-string",
            {bytes.begin - 1, fText.EndOfLine(bytes.begin)},
            "the string goes on over further lines, which look like settings: is a ) missing?");
    }
}

void DocumentScanner::NoteHexString(Span bytes) {
    std::string_view const text = fText.Bytes(bytes);
    Span const whole{bytes.begin - 1, bytes.end + 1};
    if (text.find('/') != std::string_view::npos) {
        fFaults.WarnAstray(
            "runaway-hexstring",
            {whole.begin, std::min(fText.EndOfLine(whole.begin), whole.end)},
            "the hexadecimal string goes on over a / that looks like a key's: is a > missing?");
    } else if (text.find_first_not_of("0123456789abcdefABCDEF \t\r\n\f") != text.npos) {
        fFaults.Warn("bad-hex", whole, "a hexadecimal string holds digits 0 to 9 and A to F only");
    }
}

// What follows a value without a blank is no part of it, though it looks so.
void DocumentScanner::NoteWhatIsStuck(Span value) {
    char const first = fText.At(value.begin);
    char const next = fText.At(value.end);
    bool const isStuck = IsNameByte(next) || (first == '(' && next == ')');
    if (value.Size() == 0 || !isStuck) {
        return;
    }
    if (first == '(' && fText.Bytes(value).find('(', 1) != std::string_view::npos) {
        std::size_t const end = fText.Find(value.end, ')');
        Span const whole{value.begin, end == kNone ? value.end : end + 1};
        fFaults.WarnOfRest(
            "nested-brackets", whole, value.end, NestedBracketsText(fText.Bytes(value)));
        return;
    }
    Span const token{value.begin, next == ')' ? value.end + 1 : fText.EndOfWord(value.end)};
    fFaults.WarnOfRest(
        "stuck", token, value.end, StuckText(fText.Bytes(token), fText.Bytes(value)));
}

void DocumentScanner::NoteUnknownValue() {
    if (fFaults.IsRest(fCursor)) {
        fFaults.BlameRest();
    }
    char const first = fText.At(fCursor);
    Span const key = fEntries.back().key;
    std::size_t const end = std::max(fText.EndOfWord(fCursor), fCursor + 1);
    if (key.Size() == 0 && first == '>') {
        Refuse(
            Refusal::kUnknownValue,
            "open-array",
            {fOpenArray, fOpenArray + 1},
            "the array has no end: expected ]");
    }
    if (first == '>' || first == ']') {
        Refuse(Refusal::kUnknownValue, "missing-value", key, MissingValueText(fText.Bytes(key)));
    }
    std::string const message = UnknownValueText(fText.Bytes({fCursor, end}));
    Refuse(Refusal::kUnknownValue, "unknown-value", {fCursor, end}, message);
}

void DocumentScanner::NoteEndOfDictionary() {
    if (fText.StandsOn(fCursor, ">>")) {
        return;
    }
    Span const end = Within({fCursor, fCursor + 2});
    if (fFaults.IsRest(fCursor)) {
        fFaults.BlameRest();
        return;
    }
    fFaults.WarnOfRest("single-close", end, fCursor + 2, SingleCloseText(fText.Bytes(end)));
    fFaults.BlameRest();
}

Span DocumentScanner::Within(Span span) const noexcept {
    return {std::min(span.begin, fText.Size()), std::min(span.end, fText.Size())};
}

void DocumentScanner::Refuse(Refusal why, char const* id, Span span, std::string const& message) {
    fFaults.Refuse(id, span, message);
    throw Refused{why};
}

} // namespace pdfsettings::detail
