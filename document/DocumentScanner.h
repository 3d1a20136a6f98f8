// Reads a settings text as the component does, and keeps positions and findings, which the
// component drops.
#pragma once

#include "document/FindingLog.h"
#include "document/ScannedText.h"
#include "pdfsettings/Document.h"
#include "platform/StackRoom.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pdfsettings::detail {

// One scan of one text. It repeats the component's reader step by step, including its oddities, so
// that a Document has exactly the values that the component reads; the Note and Refuse functions
// report the findings. The recursion for nested values is limited by the stack: RequireRoom refuses
// the text before the stack overflows. Not thread safe.
class DocumentScanner {
public:
    explicit DocumentScanner(std::string const& text);

    // Reads the text. Call it once. The members below have the results; see Document.
    void Scan();

    Refusal fRefusal = Refusal::kNone;
    bool fIsTooDeep = false; // the refusal is for lack of stack
    Dictionary fValues;
    std::string fTail;
    std::vector<DocumentEntry> fEntries;
    std::optional<Span> fBody;
    FindingLog fFindings;

private:
    static constexpr char kZeroByteText[] = "a zero byte ends the text before the settings end";

    // Drops an entry; reading continues with the next key. Never leaves the scanner.
    struct EntryLost {};
    // Refuses the text. Never leaves the scanner.
    struct Refused {
        Refusal fWhy;
    };

    void ScanText();
    bool FindSettings();
    void RefuseOtherEncodings();
    void ScanSettings();
    void ScanEnd();
    void ScanTail();

    void ScanEntry(Dictionary& values);
    Span ScanKey();
    void RequireRoom(platform::StackLevel const& level);
    Value ScanValue();
    std::optional<Value> ScanKnownValue();
    Value ScanName();
    Value ScanString();
    std::optional<Value> ScanBoolean();
    Value ScanNumber();
    Value ScanArray();
    void ScanElement(Array& values);
    Value ScanDictionary();
    Value ScanHexString();

    Span Within(Span span) const noexcept;
    bool HasPassedEnd() const noexcept;
    void CheckProgress(std::size_t& last, std::size_t start);
    void NoteKey(std::size_t from, std::size_t slash);
    [[noreturn]] void RefuseOtherKeyword();
    void NoteKeyword();
    void NoteClose(std::size_t begin);
    std::string UnclosedText() const;
    std::string_view NameTakenForValue() const;
    void NoteLeftover();
    void NoteNumber(Span token, Span number, bool hasPoint);
    void NoteDepth();
    void NoteZeroHead();
    void NoteOpenString(std::size_t begin);
    void NoteString(Span bytes);
    void NoteHexString(Span bytes);
    void NoteWhatIsStuck(Span value);
    [[noreturn]] void NoteUnknownValue();
    void NoteEndOfDictionary();
    [[noreturn]] void Refuse(Refusal why, char const* id, Span span, std::string const& message);
    [[noreturn]] void
    RefuseWithoutEnd(Refusal why, char const* id, Span span, std::string const& message);
    [[noreturn]] void RefuseUnknownValue(char const* id, Span span, std::string const& message);

    ScannedText fText;
    std::size_t fCursor = 0;
    std::size_t fDepth = 0;
    // The beginnings of the open dictionaries, the outermost first.
    std::vector<std::size_t> fOpen;
    // The beginning of a dictionary that the end of another one probably closed.
    std::optional<std::size_t> fMisclosed;
    // The beginning of the array that is being read.
    std::size_t fOpenArray = 0;
    // An empty dictionary that would take the next key as its own.
    std::optional<Span> fEmptyDictionary;
};

} // namespace pdfsettings::detail
