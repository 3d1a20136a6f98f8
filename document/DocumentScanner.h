// Reads a settings text as the component does, step by step, and keeps what that loses.
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

class DocumentScanner {
public:
    explicit DocumentScanner(std::string const& text);

    // Reads the text, once. The results are below; see Document.
    void Scan();

    Refusal fRefusal = Refusal::kNone;
    bool fIsTooDeep = false; // it is refused for want of stack
    Dictionary fValues;
    std::string fTail;
    std::vector<DocumentEntry> fEntries;
    std::optional<Span> fBody;
    FindingLog fFindings;

private:
    static constexpr char kZeroByteText[] = "a zero byte ends the text before the settings end";

    // Gives an entry up; the reading goes on with the next key. Never leaves the scanner.
    struct EntryLost {};
    // Gives the text up. Never leaves the scanner.
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
    // Where the dictionaries begin that are open, the outermost first.
    std::vector<std::size_t> fOpen;
    // Where one begins that is probably closed by another one's end.
    std::optional<std::size_t> fMisclosed;
    // Where the array begins whose elements are read.
    std::size_t fOpenArray = 0;
    // The empty dictionary that the next key would be taken into.
    std::optional<Span> fEmptyDictionary;
};

} // namespace pdfsettings::detail
