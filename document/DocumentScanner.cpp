#include "document/DocumentScanner.h"

#include "format/NumberText.h"

#include <algorithm>
#include <utility>

namespace pdfsettings::detail {

namespace {

constexpr std::size_t kNone = ScannedText::kNone;

// The component stores names as strings with a terminating zero.
std::string NameIn(std::string_view bytes) {
    return std::string(bytes.substr(0, bytes.find('\0')));
}

} // namespace

DocumentScanner::DocumentScanner(std::string const& text) : fFindings(text.size()), fText(text) {}

void DocumentScanner::Scan() {
    platform::StackWatch const watch;
    try {
        ScanText();
    } catch (Refused const& refused) {
        fRefusal = refused.fWhy;
        fValues = Dictionary();
        fTail.clear();
        fBody.reset();
    }
    // A name may begin at the terminating zero, and a refusal leaves entries incomplete.
    for (DocumentEntry& entry : fEntries) {
        entry.key = Within(entry.key);
        entry.value = Within(entry.value);
        entry.next = entry.next == 0 ? fEntries.size() : entry.next;
    }
}

void DocumentScanner::ScanText() {
    if (fText.At(0) == '\0') {
        NoteZeroHead();
        return;
    }
    if (!FindSettings()) {
        return;
    }
    std::size_t const begin = fCursor;
    ScanSettings();
    fBody = Span{begin, fCursor};
    ScanEnd();
    ScanTail();
}

// As in the component, the search for the opening brackets ignores comments.
bool DocumentScanner::FindSettings() {
    std::size_t const open = fText.FindText(0, "<<");
    std::size_t const start = open == 0 ? 0 : fText.Skip(0);
    if (open == kNone && start >= fText.Size()) {
        return false;
    }
    if (start != open) {
        RefuseOtherEncodings();
    }
    if (open == kNone) {
        RefuseWithoutEnd(
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
            "only comments may precede the settings");
    }
    fCursor = open + 2;
    return true;
}

// Refuses texts in encodings that editors produce, with a message that says so.
void DocumentScanner::RefuseOtherEncodings() {
    constexpr std::string_view kMark8 = "\xEF\xBB\xBF";
    std::string_view const head = fText.Bytes({0, std::min<std::size_t>(fText.Size(), 2)});
    bool const isWide = head == "\xFF\xFE" || head == "\xFE\xFF" ||
                        (head.size() == 2 && (head[0] == '\0') != (head[1] == '\0'));
    if (isWide) {
        Refuse(
            Refusal::kInvalidFile,
            "encoding",
            {0, 2},
            "the file is in UTF-16: save it as plain text, such as UTF-8 without a byte order "
            "mark");
    }
    if (fText.IsAt(0, kMark8)) {
        Refuse(
            Refusal::kInvalidFile,
            "encoding",
            {0, kMark8.size()},
            "the file begins with a byte order mark: save it without one");
    }
}

// The first test is made before blanks are skipped: if blanks follow the opening brackets, the body
// of the loop runs once even for empty settings.
void DocumentScanner::ScanSettings() {
    platform::StackLevel const level;
    if (fText.IsAt(fText.Skip(fCursor), ">>") && !fText.IsAt(fCursor, ">>")) {
        fEmptyDictionary = Span{fCursor - 2, fText.Skip(fCursor) + 2};
    }
    std::size_t const open = fCursor - 2;
    fOpen.push_back(open);
    std::size_t last = kNone;
    while (fText.At(fCursor) != '\0' && !fText.IsAt(fCursor, ">>")) {
        ScanEntry(fValues);
        CheckProgress(last, open);
    }
    if (fText.At(fCursor) == '\0') {
        RefuseWithoutEnd(
            Refusal::kInvalidFile,
            "unclosed",
            {fCursor, fCursor + 1},
            "the settings do not end: expected >> setalembicorparams" + UnclosedText());
    }
}

void DocumentScanner::ScanEnd() {
    fCursor = fText.Skip(fCursor + 2);
    if (!fText.IsAt(fCursor, format::kKeyword)) {
        RefuseOtherKeyword();
    }
    fCursor += format::kKeyword.size();
    std::size_t const end = fText.EndOfWord(fCursor);
    if (end != fCursor) {
        fFindings.Warn(
            "stuck",
            {fCursor - format::kKeyword.size(), end},
            "setalembicorparams ends here; the characters directly after it begin the tail");
    }
}

void DocumentScanner::ScanTail() {
    fCursor = fText.Skip(fCursor);
    if (fCursor < fText.Size()) {
        fTail = fText.Bytes({fCursor, fText.Size()});
        fValues.Remove(format::kTailKey);
    }
}

void DocumentScanner::ScanEntry(Dictionary& values) {
    std::size_t const place = fEntries.size();
    std::size_t const depth = fDepth;
    std::size_t const array = fOpenArray;
    std::size_t const open = fOpen.size();
    try {
        Span const key = ScanKey();
        fEntries.push_back({key, {}, 0, fDepth});
        Value value = ScanValue();
        fEntries[place].next = fEntries.size();
        std::string const name = NameIn(fText.Bytes({key.begin + 1, key.end}));
        if (values.FindKey(name) != nullptr) {
            fFindings.Warn(
                "duplicate", key, "/" + name + " is repeated: the earlier value is lost");
        }
        if (fDepth == 0 && name == format::kTailKey) {
            fFindings.Warn(
                "reserved-key",
                key,
                "this key is reserved for the tail: the setting is lost if the file has one");
        }
        values.SetKey(name, std::move(value));
    } catch (EntryLost const&) {
        fEntries.resize(place);
        fDepth = depth;
        fOpenArray = array;
        fOpen.resize(open);
    }
    fCursor = fText.Skip(fCursor);
}

// Skips whatever is before the next key.
Span DocumentScanner::ScanKey() {
    fCursor = fText.Skip(fCursor);
    std::size_t const slash = fText.Find(fCursor, '/');
    if (slash == kNone) {
        NoteLeftover();
        throw EntryLost();
    }
    NoteKey(fCursor, slash);
    std::size_t const end = fText.EndOfName(slash + 1);
    if (end - slash - 1 > format::kMaxNameSize) {
        fFindings.WarnOutOfSync("long-key", {slash, end}, "a key has at most 255 bytes");
        throw EntryLost();
    }
    fCursor = end;
    return {slash, end};
}

// Refuses the text if the stack has no room for another level of nesting. Each nested array and
// dictionary calls this, so the stack never overflows; see Document::Reading for the second attempt
// on a larger stack.
void DocumentScanner::RequireRoom(platform::StackLevel const& level) {
    if (!level.HasRoom()) {
        fIsTooDeep = true;
        Refuse(Refusal::kMemory, "nesting", {fCursor, fCursor}, "nested too deeply");
    }
}

Value DocumentScanner::ScanValue() {
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

// The order of the tests is the component's. A zero byte counts as the start of a number.
std::optional<Value> DocumentScanner::ScanKnownValue() {
    switch (fText.At(fCursor)) {
    case '/':
        return ScanName();
    case '(':
        return ScanString();
    case '[':
        return ScanArray();
    case '<':
        return fText.IsAt(fCursor, "<<") ? ScanDictionary() : ScanHexString();
    case 't':
    case 'f':
        return ScanBoolean();
    default:
        return format::kNumberStarts.Has(fText.At(fCursor)) ? std::optional(ScanNumber())
                                                            : std::nullopt;
    }
}

Value DocumentScanner::ScanName() {
    std::size_t const begin = ++fCursor;
    std::size_t const end = fText.EndOfName(begin);
    if (end - begin > format::kMaxNameSize) {
        bool const isElement = fEntries.back().key.Size() == 0;
        char const* const kText = "a name has at most 255 bytes: the entry is lost";
        if (isElement) {
            fFindings.WarnOutOfSync("long-name", {begin - 1, end}, kText);
        } else {
            fFindings.Warn("long-name", {begin - 1, end}, kText);
        }
        fFindings.NoteRest(fText.Skip(begin));
        throw EntryLost();
    }
    if (!IsNameByte(fText.At(begin))) {
        fFindings.Warn("odd-name", {begin - 1, end}, "a name begins with a blank or a delimiter");
    }
    fCursor = end;
    return Name{NameIn(fText.Bytes({begin, end}))};
}

Value DocumentScanner::ScanString() {
    std::size_t const begin = ++fCursor;
    std::size_t const end = fText.EndOfString(begin);
    if (end == kNone) {
        NoteOpenString(begin);
        fFindings.NoteRest(fText.Skip(begin));
        throw EntryLost();
    }
    fCursor = end + 1;
    NoteString({begin, end});
    return RawString{std::string(fText.Bytes({begin, end}))};
}

std::optional<Value> DocumentScanner::ScanBoolean() {
    for (std::string_view const word : {"true", "false"}) {
        if (fText.IsAt(fCursor, word)) {
            fCursor += word.size();
            return Name{std::string(word)};
        }
    }
    return std::nullopt;
}

Value DocumentScanner::ScanNumber() {
    std::size_t const begin = fCursor;
    auto const token = fText.NumberAt(begin);
    if (!token) {
        bool const isMissing = fText.At(begin) == '\0';
        RefuseWithoutEnd(
            Refusal::kMemory,
            isMissing ? "missing-value" : "open-number",
            {begin, fText.EndOfWord(begin)},
            isMissing ? "the text ends where a value is expected"
                      : "the number has no end: expected a blank behind it");
    }
    auto const number = format::ScanNumber(fText.Bytes(token->fToken), token->fHasPoint);
    fCursor += number.fSize;
    NoteNumber(token->fToken, {begin, fCursor}, token->fHasPoint);
    return number.fValue;
}

Value DocumentScanner::ScanArray() {
    std::size_t const begin = fCursor;
    platform::StackLevel const level;
    RequireRoom(level);
    std::size_t const outer = std::exchange(fOpenArray, begin);
    std::size_t last = kNone;
    Array values;
    ++fDepth;
    NoteDepth();
    fCursor = fText.Skip(fCursor + 1);
    while (fText.At(fCursor) != ']') {
        if (fText.At(fCursor) == '\0') {
            RefuseWithoutEnd(
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
    fOpenArray = outer;
    return values;
}

void DocumentScanner::ScanElement(Array& values) {
    std::size_t const place = fEntries.size();
    fEntries.push_back({{fCursor, fCursor}, {}, 0, fDepth});
    values.push_back(ScanValue());
    fEntries[place].next = fEntries.size();
    fCursor = fText.Skip(fCursor);
}

// The first entry is read before the end is tested, so an empty dictionary takes the next key as
// its own. As in the component, a ">" in either of two bytes ends the dictionary, whatever the
// other byte is.
Value DocumentScanner::ScanDictionary() {
    platform::StackLevel const level;
    RequireRoom(level);
    std::size_t const begin = fCursor;
    std::size_t last = kNone;
    Dictionary values;
    ++fDepth;
    fOpen.push_back(begin);
    NoteDepth();
    fCursor = fText.Skip(fCursor + 2);
    if (fText.At(fCursor) == '>') {
        fEmptyDictionary = Span{begin, fCursor + (fText.IsAt(fCursor, ">>") ? 2 : 1)};
    }
    ScanEntry(values);
    while (fText.At(fCursor) != '>' && fText.At(fCursor + 1) != '>') {
        CheckProgress(last, begin);
        ScanEntry(values);
    }
    NoteEndOfDictionary();
    NoteClose(begin);
    fCursor += 2;
    --fDepth;
    fOpen.pop_back();
    return values;
}

Value DocumentScanner::ScanHexString() {
    std::size_t const begin = fCursor + 1;
    std::size_t const end = fText.Find(begin, '>');
    if (end == kNone) {
        RefuseWithoutEnd(
            Refusal::kMemory,
            "open-hexstring",
            {fCursor, fText.EndOfLine(fCursor)},
            "the hexadecimal string has no end: expected >");
    }
    fCursor = end + 1;
    NoteHexString({begin, end});
    return HexString{std::string(fText.Bytes({begin, end}))};
}

} // namespace pdfsettings::detail
