#include "host/detail/DocumentScanner.h"

#include "host/detail/FaultText.h"
#include "platform/NumberText.h"
#include "platform/StackRoom.h"

#include <algorithm>
#include <utility>

namespace pdfsettings::detail {

namespace {

constexpr std::size_t kNone = ScannedText::kNone;
constexpr std::size_t kMaxNameSize = 255;
constexpr std::string_view kKeyword = "setalembicorparams";

// The component keeps names as texts that end at a zero byte.
std::string NameIn(std::string_view bytes) {
    return std::string(bytes.substr(0, bytes.find('\0')));
}

// The first of what is passed over between from and the next key: up to the end of the line, of the
// dictionary, or to a comment.
Span StrayIn(ScannedText const& text, std::size_t from, std::size_t slash) {
    std::size_t const found = text.FindAny(from + 1, ">%\r\n");
    return text.WithoutBlanksBehind({from, std::min(found, slash)});
}

} // namespace

DocumentScanner::DocumentScanner(std::string const& text) : fFaults(text.size()), fText(text) {}

void DocumentScanner::Scan() {
    platform::StackWatch const watch;
    try {
        ScanText();
    } catch (Refused const& refused) {
        fRefusal = refused.fWhy;
        fValues = Dictionary();
        fBody.reset();
    }
    // A name may begin with the first byte behind the text, and a refusal leaves entries open.
    for (DocumentEntry& entry : fEntries) {
        entry.key = Within(entry.key);
        entry.value = Within(entry.value);
        entry.next = entry.next == 0 ? fEntries.size() : entry.next;
    }
}

void DocumentScanner::ScanText() {
    if (fText.At(0) == '\0' || !FindSettings()) {
        return;
    }
    std::size_t const begin = fCursor;
    ScanSettings();
    fBody = Span{begin, fCursor};
    ScanEnd();
    ScanTail();
}

// The search for the opening knows nothing of comments.
bool DocumentScanner::FindSettings() {
    std::size_t const open = fText.FindText(0, "<<");
    std::size_t const start = open == 0 ? 0 : fText.Skip(0);
    if (open == kNone && start >= fText.Size()) {
        return false;
    }
    if (open == kNone) {
        Refuse(
            Refusal::kInvalidFile,
            "no-settings",
            {start, fText.EndOfLine(start)},
            "there are no settings: expected <<");
    }
    if (start > open) {
        Refuse(
            Refusal::kInvalidFile,
            "prolog",
            {open, open + 2},
            "a comment before the settings must not contain <<");
    }
    if (start != open) {
        Refuse(
            Refusal::kInvalidFile,
            "prolog",
            fText.WithoutBlanksBehind({start, std::min(open, fText.EndOfLine(start))}),
            PrologText(fText.Bytes({start, open})));
    }
    fCursor = open + 2;
    return true;
}

// The first look comes before any skip: blanks behind the opening make the loop run once.
void DocumentScanner::ScanSettings() {
    if (fText.StandsOn(fText.Skip(fCursor), ">>") && !fText.StandsOn(fCursor, ">>")) {
        fEmptyDictionary = Span{fCursor - 2, fText.Skip(fCursor) + 2};
    }
    std::size_t const open = fCursor - 2;
    std::size_t last = kNone;
    while (fText.At(fCursor) != '\0' && !fText.StandsOn(fCursor, ">>")) {
        ScanEntry(fValues);
        CheckProgress(last, open);
    }
    if (fText.At(fCursor) == '\0') {
        Refuse(
            Refusal::kInvalidFile,
            fCursor < fText.Size() ? "zero-byte" : "unclosed",
            {fCursor, fCursor + 1},
            fCursor < fText.Size() ? "a zero byte ends the text before the settings end"
                                   : "the settings do not end: expected >> setalembicorparams");
    }
}

void DocumentScanner::ScanEnd() {
    fCursor = fText.Skip(fCursor + 2);
    if (!fText.StandsOn(fCursor, kKeyword)) {
        Span const found = Within({fCursor, fText.EndOfName(fCursor)});
        Refuse(Refusal::kInvalidFile, "keyword", found, KeywordText(fText.Bytes(found)));
    }
    fCursor += kKeyword.size();
    std::size_t const end = fText.EndOfWord(fCursor);
    if (end != fCursor) {
        fFaults.Warn(
            "stuck",
            {fCursor - kKeyword.size(), end},
            "setalembicorparams ends here, and what is stuck to it begins the tail");
    }
}

void DocumentScanner::ScanTail() {
    fCursor = fText.Skip(fCursor);
    if (fCursor < fText.Size()) {
        std::string const bytes(fText.Bytes({fCursor, fText.Size()}));
        fValues.Set(kTailKey, Binary{kTailKey, bytes});
    }
}

void DocumentScanner::ScanEntry(Dictionary& values) {
    std::size_t const place = fEntries.size();
    std::size_t const depth = fDepth;
    try {
        Span const key = ScanKey();
        fEntries.push_back({key, {}, 0, fDepth});
        Value value = ScanValue();
        fEntries[place].next = fEntries.size();
        std::string const name = NameIn(fText.Bytes({key.begin + 1, key.end}));
        if (values.Get(name) != nullptr) {
            fFaults.Warn("duplicate", key, DuplicateText(name));
        }
        if (fDepth == 0 && name == kTailKey) {
            fFaults.Warn(
                "reserved-key",
                key,
                "this key is the tail's: the setting is lost when there is a tail");
        }
        values.Set(name, std::move(value));
    } catch (EntryLost const&) {
        fEntries.resize(place);
        fDepth = depth;
    }
    fCursor = fText.Skip(fCursor);
}

// Whatever stands before the next key is passed over.
Span DocumentScanner::ScanKey() {
    fCursor = fText.Skip(fCursor);
    std::size_t const slash = fText.Find(fCursor, '/');
    if (slash == kNone) {
        NoteLeftover();
        throw EntryLost();
    }
    NoteKey(fCursor, slash);
    std::size_t const end = fText.EndOfName(slash + 1);
    if (end - slash - 1 > kMaxNameSize) {
        fFaults.WarnAstray("long-key", {slash, end}, "a key has at most 255 bytes");
        throw EntryLost();
    }
    fCursor = end;
    return {slash, end};
}

Value DocumentScanner::ScanValue() {
    if (!platform::StackWatch::HasRoom()) {
        Refuse(Refusal::kMemory, "nesting", {fCursor, fCursor}, "nested too deeply");
    }
    fCursor = fText.Skip(fCursor);
    Span value{fCursor, 0};
    std::size_t const place = fEntries.size();
    auto known = ScanKnownValue();
    if (!known) {
        NoteUnknownValue();
    }
    value.end = fCursor;
    fEntries[place - 1].value = value;
    NoteWhatIsStuck(value);
    return std::move(*known);
}

// The probes in the order of the component. A zero byte counts as the start of a number.
std::optional<Value> DocumentScanner::ScanKnownValue() {
    switch (fText.At(fCursor)) {
    case '/':
        return ScanName();
    case '(':
        return ScanString();
    case '[':
        return ScanArray();
    case '<':
        return fText.StandsOn(fCursor, "<<") ? ScanDictionary() : ScanHexString();
    case 't':
    case 'f':
        return ScanBoolean();
    default:
        bool const isNumber =
            std::string_view("-0123456789\0", 12).find(fText.At(fCursor)) != std::string_view::npos;
        return isNumber ? std::optional(ScanNumber()) : std::nullopt;
    }
}

Value DocumentScanner::ScanName() {
    std::size_t const begin = ++fCursor;
    std::size_t const end = fText.EndOfName(begin);
    if (end - begin > kMaxNameSize) {
        fFaults.WarnAstray(
            "long-name", {begin - 1, end}, "a name has at most 255 bytes: the entry is lost");
        fFaults.NoteRest(fText.Skip(begin));
        throw EntryLost();
    }
    if (!IsNameByte(fText.At(begin))) {
        fFaults.Warn("odd-name", {begin - 1, end}, "a name begins with a blank or a delimiter");
    }
    fCursor = end;
    return Word{NameIn(fText.Bytes({begin, end}))};
}

Value DocumentScanner::ScanString() {
    std::size_t const begin = ++fCursor;
    std::size_t const end = fText.EndOfString(begin);
    if (end == kNone) {
        fFaults.WarnAstray(
            "open-string",
            {begin - 1, fText.EndOfLine(begin)},
            "the string has no end: expected ); the entry is lost");
        fFaults.NoteRest(fText.Skip(begin));
        throw EntryLost();
    }
    fCursor = end + 1;
    NoteString({begin, end});
    return String{std::string(fText.Bytes({begin, end}))};
}

std::optional<Value> DocumentScanner::ScanBoolean() {
    for (std::string_view const word : {"true", "false"}) {
        if (fText.StandsOn(fCursor, word)) {
            fCursor += word.size();
            return Word{std::string(word)};
        }
    }
    return std::nullopt;
}

Value DocumentScanner::ScanNumber() {
    std::size_t const begin = fCursor;
    std::size_t const stop = fText.FindAny(begin, " \n\r\t]>");
    if (stop == kNone) {
        bool const isMissing = fText.At(begin) == '\0';
        Refuse(
            Refusal::kMemory,
            isMissing ? "missing-value" : "open-number",
            {begin, fText.EndOfWord(begin)},
            isMissing ? "the text ends where a value is expected"
                      : "the number has no end: expected a blank behind it");
    }
    platform::ScannedNumber const number = platform::ScanNumber(fText.Bytes({begin, stop}));
    fCursor += number.fSize;
    NoteNumber({begin, stop}, {begin, fCursor});
    return number.fValue;
}

Value DocumentScanner::ScanArray() {
    std::size_t const begin = fCursor;
    std::size_t last = kNone;
    Array values;
    ++fDepth;
    fCursor = fText.Skip(fCursor + 1);
    while (fText.At(fCursor) != ']') {
        if (fText.At(fCursor) == '\0') {
            Refuse(
                Refusal::kMemory,
                "open-array",
                {begin, begin + 1},
                "the array has no end: expected ]");
        }
        ScanElement(values);
        CheckProgress(last, begin);
    }
    ++fCursor;
    --fDepth;
    return values;
}

void DocumentScanner::ScanElement(Array& values) {
    std::size_t const place = fEntries.size();
    fEntries.push_back({{fCursor, fCursor}, {}, 0, fDepth});
    values.Append(ScanValue());
    fEntries[place].next = fEntries.size();
    fCursor = fText.Skip(fCursor);
}

// The first entry is read before any look for the end. A single ">" in either of two places ends
// it, whatever the other byte is.
Value DocumentScanner::ScanDictionary() {
    std::size_t const begin = fCursor;
    std::size_t last = kNone;
    Dictionary values;
    ++fDepth;
    fCursor = fText.Skip(fCursor + 2);
    if (fText.At(fCursor) == '>') {
        fEmptyDictionary = Span{begin, fCursor + (fText.StandsOn(fCursor, ">>") ? 2 : 1)};
    }
    ScanEntry(values);
    while (fText.At(fCursor) != '>' && fText.At(fCursor + 1) != '>') {
        CheckProgress(last, begin);
        ScanEntry(values);
    }
    NoteEndOfDictionary();
    fCursor += 2;
    --fDepth;
    return values;
}

Value DocumentScanner::ScanHexString() {
    std::size_t const begin = fCursor + 1;
    std::size_t const end = fText.Find(begin, '>');
    if (end == kNone) {
        Refuse(
            Refusal::kMemory,
            "open-hexstring",
            {fCursor, fText.EndOfLine(fCursor)},
            "the hexadecimal string has no end: expected >");
    }
    fCursor = end + 1;
    std::string_view const bytes = fText.Bytes({begin, end});
    if (bytes.find_first_not_of("0123456789abcdefABCDEF \t\r\n\f") != std::string_view::npos) {
        fFaults.Warn(
            "bad-hex",
            {begin - 1, end + 1},
            "a hexadecimal string holds digits 0 to 9 and A to F only");
    }
    return HexString{std::string(bytes)};
}

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

void DocumentScanner::NoteNumber(Span token, Span number) {
    std::string_view const bytes = fText.Bytes(token);
    std::string_view const own = fText.Bytes(number);
    if (own.empty()) {
        Span const sign{number.begin, number.begin + 1};
        fFaults.WarnOfRest("no-number", sign, number.end, "a sign without digits is read as 0");
        return;
    }
    bool const isReal = own.find('.') != std::string_view::npos;
    bool const hasPoint = bytes.find('.') != std::string_view::npos;
    auto const alone = platform::ScanNumber(own);
    auto const found = platform::ScanNumber(bytes);
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

// What follows a value without a blank is no part of it, though it looks so.
void DocumentScanner::NoteWhatIsStuck(Span value) {
    char const first = fText.At(value.begin);
    char const next = fText.At(value.end);
    if (value.Size() == 0 || (!IsNameByte(next) && next != ')')) {
        return;
    }
    if (first == '(' && fText.Bytes(value).find('(', 1) != std::string_view::npos) {
        std::size_t const end = fText.Find(value.end, ')');
        Span const whole{value.begin, end == kNone ? value.end : end + 1};
        fFaults.WarnOfRest(
            "nested-brackets", whole, value.end, NestedBracketsText(fText.Bytes(value)));
        return;
    }
    Span const token{value.begin, fText.EndOfWord(value.end)};
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
            {fCursor, end},
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
