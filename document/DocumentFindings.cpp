// The scanner's findings: their messages, and what each of them causes.
#include "document/DocumentScanner.h"
#include "format/NumberText.h"

#include <algorithm>
#include <utility>

namespace pdfsettings::detail {

namespace {

constexpr std::size_t kNone = ScannedText::kNone;
constexpr std::string_view kDigits = "0123456789";

// Text for a message, truncated if it is long.
std::string Shown(std::string_view text) {
    constexpr std::size_t kMost = 60;
    return text.size() <= kMost ? std::string(text) : std::string(text.substr(0, kMost)) + "…";
}

std::string Quoted(std::string_view text) {
    return "\"" + Shown(text) + "\"";
}

// The number without leading zeros, which would make it octal.
std::string Decimal(std::string_view number) {
    bool const isNegative = number.starts_with('-');
    std::size_t const first = number.find_first_not_of("-0");
    std::string const digits(first == std::string_view::npos ? "0" : number.substr(first));
    return (isNegative ? "-" : "") + digits;
}

bool IsLetter(char byte) noexcept {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
}

// A hint if the text looks like a key or name without its slash.
std::string SlashHint(std::string_view found) {
    return !found.empty() && IsLetter(found[0]) ? ", or is a / missing before it?" : "";
}

// The value that an invalid one was probably meant to be; empty for no idea.
std::string ValueMeant(std::string_view found) {
    constexpr std::pair<std::string_view, char const*> kMeant[] = {
        {"True", "true"}, {"TRUE", "true"}, {"False", "false"}, {"FALSE", "false"}};
    for (auto const& [wrong, right] : kMeant) {
        if (found == wrong) {
            return right;
        }
    }
    bool const isNumber = found.size() > 1 && (found[0] == '+' || found[0] == '.');
    if (isNumber && kDigits.find(found[1]) != std::string_view::npos) {
        return found[0] == '+' ? std::string(found.substr(1)) : "0" + std::string(found);
    }
    return "";
}

// Whether an integer begins with a 0 that makes it octal.
bool IsOctal(std::string_view number) noexcept {
    std::size_t const first = number.starts_with('-') ? 1 : 0;
    return number.size() > first + 1 && number[first] == '0' &&
           kDigits.find(number[first + 1]) != std::string_view::npos;
}

// Whether an integer has more digits than its value keeps.
bool IsInexact(std::string_view number, double value) {
    bool const isDecimal = number.find_first_not_of("-0123456789") == std::string_view::npos;
    return isDecimal && !IsOctal(number) && number != "-0" && format::WholeText(value) != number;
}

// Whether a string has an opening parenthesis without a backslash before it.
bool HasBracket(std::string_view string) noexcept {
    for (std::size_t at = string.find('('); at != std::string_view::npos;
         at = string.find('(', at + 1)) {
        if (at == 0 || string[at - 1] != '\\') {
            return true;
        }
    }
    return false;
}

// Whether a string ends with an odd number of backslashes, as if its closing parenthesis were
// escaped.
bool EndsInOddBackslashes(std::string_view string) noexcept {
    std::size_t const last = string.find_last_not_of('\\');
    std::size_t const count = string.size() - (last == std::string_view::npos ? 0 : last + 1);
    return count % 2 == 1;
}

// Whether a string has several lines, and one that begins like an entry.
bool LooksLikeEntries(std::string_view string) noexcept {
    for (std::size_t end = string.find_first_of("\r\n"); end != std::string_view::npos;
         end = string.find_first_of("\r\n", end + 1)) {
        std::size_t const first = string.find_first_not_of("\r\n\t ", end);
        if (first != std::string_view::npos && string[first] == '/') {
            return true;
        }
    }
    return false;
}

// The messages: what is wrong, and what to write instead. The arguments are the bytes in question.

std::string EmptyDictionaryText(std::size_t depth) {
    return depth == 0 ? "empty settings with a blank between << and >> are misread: write <<>>"
                      : "an empty dictionary swallows the entries after it: remove it";
}

// name: the value of the key before it, if that is a name.
std::string StrayText(std::string_view stray, std::string_view name) {
    return Quoted(stray) + " is ignored: " +
           (name.empty() ? "it has no key" + SlashHint(stray)
                         : std::string(name) + " is read as the value of the key before it");
}

std::string StrayBeforeEndText(std::string_view stray, std::string_view name) {
    if (!name.empty()) {
        return StrayText(stray, name) + ", and the end of the dictionary is skipped too";
    }
    return stray.empty()
               ? "there is one > too many"
               : Quoted(stray) + " before the end of a dictionary hides that end: remove it" +
                     SlashHint(stray);
}

std::string OctalText(std::string_view number, double value) {
    return "the leading 0 makes " + std::string(number) + " octal, and it is read as " +
           format::ShortestText(value) + ": write " + Decimal(number);
}

std::string FarPointText(std::string_view number, double value) {
    return "the point in the characters after it makes " + Shown(number) + " the number " +
           format::ShortestText(value) + ": put a blank behind the number";
}

std::string StuckText(std::string_view token, std::string_view value) {
    std::string text = Quoted(token) + " is read as " + Shown(value);
    bool const isNumber = value.find_first_not_of("-0123456789") == std::string_view::npos;
    if (IsOctal(token)) {
        return text + ", since a leading 0 makes it octal: write " + Decimal(token);
    }
    std::string_view const exponent = token.substr(std::min(value.size() + 1, token.size()));
    bool const hasDigits = exponent.find_first_of(kDigits) != std::string_view::npos;
    if (isNumber && hasDigits && (token[value.size()] | 0x20) == 'e') {
        return text + ", since an exponent needs a point: write " + std::string(value) + ".0" +
               std::string(token.substr(value.size()));
    }
    std::string_view const rest = token.substr(value.size());
    bool const isComma = isNumber && rest.size() > 1 && rest[0] == ',' &&
                         rest.find_first_not_of(kDigits, 1) == std::string_view::npos;
    if (isComma) {
        return text + ": write " + std::string(value) + "." + std::string(rest.substr(1)) +
               ", or leave the comma out";
    }
    return text + ": remove " + Quoted(rest);
}

std::string UnknownValueText(std::string_view found) {
    std::string const meant = ValueMeant(found);
    if (!meant.empty()) {
        return Quoted(found) + " is not a value: write " + meant;
    }
    if (found.starts_with('{')) {
        return "a procedure is not a value";
    }
    if (IsLetter(found[0])) {
        return Quoted(found) + " is not a value: write /" + Shown(found) + " for a name, (" +
               Shown(found) + ") for a text";
    }
    if (found.starts_with('"') || found.starts_with('\'')) {
        return Quoted(found) + " is not a value: write (text) for a string, /Name for a name";
    }
    return Quoted(found) + " is not a value: expected true, false, a number, /Name, (text), "
                           "<FEFF>, [ … ] or << … >>";
}

std::string SingleCloseText(std::string_view end) {
    return "a single > ends the dictionary, and both bytes of " + Quoted(end) +
           " are skipped: write >>";
}

// The first part of the bytes between from and the next key: up to the end of the line, the end of
// the dictionary, or a comment.
Span StrayIn(ScannedText const& text, std::size_t from, std::size_t slash) {
    std::string_view const passed = text.Bytes({from, slash});
    std::size_t const end =
        std::min({passed.find_first_of("%\r\n", 1), passed.find(">>", 1), passed.size()});
    return text.WithoutBlanksBehind({from, from + end});
}

// Whether the end of a dictionary is between two offsets, outside comments, strings and hexadecimal
// strings.
bool HasEndIn(ScannedText& text, std::size_t from, std::size_t slash) {
    while (from < slash && !text.IsAt(from, ">>")) {
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

// An iteration that does not move the cursor would repeat for ever.
void DocumentScanner::CheckProgress(std::size_t& last, std::size_t start) {
    if (fCursor != last) {
        last = fCursor;
        return;
    }
    if (fFindings.IsRest(fCursor)) {
        fFindings.BlameRest();
    }
    if (fText.IsAt(fCursor, format::kKeyword)) {
        NoteKeyword();
    }
    RefuseWithoutEnd(
        Refusal::kInvalidFile,
        "unclosed",
        {start, start + 2},
        "the dictionary has no end: expected >>");
}

// Reports what is between a value and the next key.
void DocumentScanner::NoteKey(std::size_t from, std::size_t slash) {
    auto const empty = std::exchange(fEmptyDictionary, std::nullopt);
    if (empty) {
        fFindings.WarnOutOfSync("empty-dictionary", *empty, EmptyDictionaryText(fDepth));
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
    if (fText.IsAt(from, format::kKeyword)) {
        NoteKeyword();
        return;
    }
    Span const stray = StrayIn(fText, from, slash);
    bool const isRest = fFindings.IsRest(from);
    bool const hasEnd = HasEndIn(fText, from, slash);
    if (isRest && hasEnd) {
        fFindings.BlameRest();
    } else if (hasEnd) {
        fFindings.WarnOutOfSync(
            "stray", stray, StrayBeforeEndText(fText.Bytes(stray), NameTakenForValue()));
    } else if (!isRest) {
        fFindings.Warn("stray", stray, StrayText(fText.Bytes(stray), NameTakenForValue()));
    }
}

// Refuses a text with something other than the keyword after the settings.
void DocumentScanner::RefuseOtherKeyword() {
    std::string const expected = "expected setalembicorparams behind the settings";
    if (fText.At(fCursor) == '\0') {
        RefuseWithoutEnd(Refusal::kInvalidFile, "keyword", {fCursor, fCursor}, expected);
    }
    Span const found = Within({fCursor, fText.EndOfName(fCursor)});
    std::string const message = expected + ", found " + Quoted(fText.Bytes(found));
    Refuse(Refusal::kInvalidFile, "keyword", found, message);
}

// Reports the keyword at the cursor, before the settings have ended.
void DocumentScanner::NoteKeyword() {
    fFindings.WarnOutOfSync(
        "unclosed",
        {fCursor, fCursor + format::kKeyword.size()},
        "setalembicorparams is inside a dictionary: a >> is missing before it" + UnclosedText());
}

// The end of a dictionary that is indented less than the line where the dictionary begins is
// probably the end of another one.
void DocumentScanner::NoteClose(std::size_t begin) {
    std::size_t const indent = fText.IndentAt(fCursor);
    bool const isFirst = indent != kNone && !fMisclosed;
    if (isFirst && indent < fText.IndentOfLine(begin)) {
        fMisclosed = begin;
    }
}

std::string DocumentScanner::UnclosedText() const {
    if (fOpen.empty()) {
        return "";
    }
    std::size_t const line = fText.LineOf(fMisclosed.value_or(fOpen.back()));
    return "; the << in line " + std::to_string(line) + " is not closed";
}

// The value of the last entry of the current dictionary if it is a name, else empty.
std::string_view DocumentScanner::NameTakenForValue() const {
    bool const isName = !fEntries.empty() && fEntries.back().depth == fDepth &&
                        fText.At(fEntries.back().value.begin) == '/';
    return isName ? fText.Bytes(fEntries.back().value) : std::string_view();
}

// Reports what is between the last value and the end, if no key follows in the text.
void DocumentScanner::NoteLeftover() {
    fEmptyDictionary.reset();
    bool const isEnd = fText.At(fCursor) == '\0' || fText.At(fCursor) == '>' ||
                       fText.IsAt(fCursor, format::kKeyword);
    if (isEnd) {
        return;
    }
    if (fFindings.IsRest(fCursor)) {
        fFindings.BlameRest();
        return;
    }
    Span const stray = StrayIn(fText, fCursor, fText.EndOfLine(fCursor));
    fFindings.WarnOutOfSync(
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
        std::string const read = format::WholeText(found.fValue);
        fFindings.Warn("rounded", number, Shown(own) + " is read as " + read);
    } else if (!isReal && IsOctal(own) && !IsNameByte(fText.At(number.end))) {
        fFindings.Warn("octal", number, OctalText(own, found.fValue));
    }
}

// Every thread has enough stack for this many levels.
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
            "the text begins with a zero byte, and nothing of it is read: is it in UTF-16?");
    }
}

// A zero byte may have ended the search.
void DocumentScanner::NoteOpenString(std::size_t begin) {
    std::size_t const zero = fText.ZeroByte(begin);
    if (zero != kNone) {
        fFindings.WarnOutOfSync("zero-byte", {zero, zero + 1}, kZeroByteText);
    } else {
        fFindings.WarnOutOfSync(
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
        fFindings.WarnOutOfSync(
            "runaway-string",
            {whole.begin, std::min(fText.EndOfLine(whole.begin), whole.end)},
            "the string contains what looks like settings: is a ) missing?");
    } else if (isNested) {
        std::size_t const end = fText.EndOfString(whole.end);
        bool const isClosed = end != kNone && end < fText.EndOfLine(whole.begin);
        fFindings.WarnOfRest(
            "nested-brackets",
            {whole.begin, isClosed ? end + 1 : whole.end},
            whole.end,
            "parentheses do not nest, and the string ends at the first ): write \\( and \\) "
            "inside");
    } else if (EndsInOddBackslashes(string)) {
        fFindings.Warn(
            "backslashes",
            whole,
            "only a single backslash escapes a ): behind three or more the string ends");
    }
}

void DocumentScanner::NoteHexString(Span bytes) {
    std::string_view const text = fText.Bytes(bytes);
    Span const whole{bytes.begin - 1, bytes.end + 1};
    if (text.find('/') != std::string_view::npos) {
        fFindings.WarnOutOfSync(
            "runaway-hexstring",
            {whole.begin, std::min(fText.EndOfLine(whole.begin), whole.end)},
            "the hexadecimal string contains a / that looks like a key: is a > missing?");
    } else if (text.find_first_not_of("0123456789abcdefABCDEF \t\r\n\f") != text.npos) {
        fFindings.Warn(
            "bad-hex", whole, "a hexadecimal string holds digits 0 to 9 and A to F only");
    }
}

// Reports bytes directly after a value, which are not read as part of it.
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
        RefuseUnknownValue("missing-value", key, std::string(fText.Bytes(key)) + " has no value");
    }
    std::string const message = UnknownValueText(fText.Bytes({fCursor, end}));
    RefuseUnknownValue("unknown-value", {fCursor, end}, message);
}

void DocumentScanner::NoteEndOfDictionary() {
    if (fText.IsAt(fCursor, ">>")) {
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

// Whether the settings ended between the loss of sync and the cursor: then a mistake at the cursor
// is not the author's.
bool DocumentScanner::HasPassedEnd() const noexcept {
    auto const lost = fFindings.SyncLossAt();
    return lost && fText.Bytes({*lost, std::max(*lost, fCursor)}).find(format::kKeyword) !=
                       std::string_view::npos;
}

void DocumentScanner::Refuse(Refusal why, char const* id, Span span, std::string const& message) {
    fFindings.Refuse(id, span, message, FindingLog::Blame::kSyncLoss);
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
    auto const blame = HasPassedEnd() ? FindingLog::Blame::kSyncLoss
                       : isRest       ? FindingLog::Blame::kRest
                                      : FindingLog::Blame::kNothing;
    fFindings.Refuse(id, span, message, blame);
    throw Refused{Refusal::kUnknownValue};
}

} // namespace pdfsettings::detail
