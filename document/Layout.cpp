// The standard layout of a document.
//
// LayoutReader takes the text apart: it finds the comments and blank lines before each key, value
// and closing bracket. Nothing else may be there: what belongs to no setting has no place in a
// layout. LayoutWriter puts the same bytes together again, with other blanks and line ends between
// them. The result is then read like any other text and compared with the document, so a layout
// that would change what is read is rejected.
#include "pdfsettings/Document.h"

#include "format/Tokens.h"

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace pdfsettings {

namespace {

constexpr std::string_view kLineEnds = "\r\n";
constexpr std::size_t kMostColumns = 100;
constexpr std::size_t kTooWide = kMostColumns + 1;
// Deeper lines are not indented further, so that the result of any text is linear in its size.
constexpr std::size_t kDeepestIndent = 50;

// The number of characters of UTF-8 in text, as far as it matters for a line.
std::size_t WidthOf(std::string_view text) {
    if (text.find_first_of(kLineEnds) != std::string_view::npos) {
        return kTooWide;
    }
    auto const begins = [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80;
    };
    return std::min(static_cast<std::size_t>(std::ranges::count_if(text, begins)), kTooWide);
}

// A comment on a line of its own.
struct Comment {
    Span fBytes;
    bool fHasBlankLine; // above it
};

// What the author wrote around a key, a scalar or a bracket.
struct Surroundings {
    std::size_t fFirst = 0; // of the comments above it, an index in Pieces::fComments
    std::size_t fEnd = 0;   // after the last of them
    bool fHasBlankLine = false;
    Span fBehind; // the comment behind it on its line; empty if there is none
};

// An entry of a document, or the settings as a whole.
struct Part {
    Surroundings fKey;
    Surroundings fValue; // of a scalar or an opening bracket
    Surroundings fClose;
    std::size_t fWidth = kTooWide; // of the value, if it can be on one line
};

// A document taken apart.
struct Pieces {
    std::vector<Part> fParts; // of the entries, in their order; then the settings
    std::vector<Comment> fComments;
    Surroundings fKeyword;
    std::size_t fKeywordBegin = 0;
    std::string fLineEnd; // the first one of the text that is not in a value
};

std::string_view ClosingBracket(std::string_view value) {
    return value.starts_with("<<") ? ">>" : value.starts_with('[') ? "]" : "";
}

Span SpanOfSettings(Document const& document) {
    return {document.Body()->begin - 2, document.Body()->end + 2};
}

// Throws Error (kUnwritable) because of a finding.
[[noreturn]] void ThrowBecause(Finding const& cause) {
    throw Error(
        Fault::kUnwritable,
        "cannot be laid out: " + cause.Message(),
        {},
        cause.Where(),
        {},
        cause.Id());
}

// Throws Error (kUnwritable) for a place that no finding is about.
[[noreturn]] void ThrowAt(Document const& document, std::size_t offset, char const* reason) {
    throw Error(
        Fault::kUnwritable,
        std::string("cannot be laid out: ") + reason,
        {},
        document.PlaceOf(std::min(offset, document.Text().size())));
}

// Takes a document apart. REQUIRES: the document has settings.
class LayoutReader {
public:
    explicit LayoutReader(Document const& document) : fDocument(document), fText(document.Text()) {}

    // Call it once. Throws Error (kUnwritable), with the position of what belongs to no setting.
    Pieces Read() {
        std::size_t const count = fDocument.Entries().size();
        Span const settings = SpanOfSettings(fDocument);
        fPieces.fParts.resize(count + 1);
        fCursor = settings.begin;
        NoteLineEndIn(0, settings.begin);
        ReadValue(count, settings, count);
        for (std::size_t i = 0; i < count; ++i) {
            CloseBefore(i);
            ReadEntry(i);
        }
        CloseBefore(count);
        ReadGap(fPieces.fKeyword);
        fPieces.fKeywordBegin = fCursor;
        NoteLineEndIn(fCursor, fText.size());
        return std::move(fPieces);
    }

private:
    // A bracket that is not closed yet.
    struct Open {
        std::size_t fPart;
        std::size_t fEnd; // the index after its last entry
        Span fBytes;
        std::size_t fComments; // how many came before it
        std::size_t fWidth;    // of what is in it so far, with its brackets
    };

    void ReadEntry(std::size_t place) {
        DocumentEntry const& entry = fDocument.Entries()[place];
        if (entry.key.Size() > 0) {
            Advance(entry.key.begin, fPieces.fParts[place].fKey);
            fCursor = entry.key.end;
        }
        ReadValue(place, entry.value, entry.next);
    }

    void ReadValue(std::size_t place, Span value, std::size_t end) {
        Part& part = fPieces.fParts[place];
        Advance(value.begin, part.fValue);
        std::string_view const bytes = fText.substr(value.begin, value.Size());
        std::size_t const bracket = ClosingBracket(bytes).size();
        if (bracket == 0) {
            fCursor = value.end;
            SetWidth(part, WidthOf(bytes));
            return;
        }
        constexpr std::size_t kWidthOfEmpty = std::string_view("[ ]").size();
        fCursor = value.begin + bracket;
        fOpen.push_back(
            {place, end, value, fCommentCount, bracket == 1 ? kWidthOfEmpty : kTooWide});
    }

    // Reads the ends of the values that have no entry at this place or behind it.
    void CloseBefore(std::size_t place) {
        while (!fOpen.empty() && fOpen.back().fEnd == place) {
            Open const open = fOpen.back();
            fOpen.pop_back();
            Close(open);
        }
    }

    void Close(Open const& open) {
        std::string_view const bytes = fText.substr(open.fBytes.begin, open.fBytes.Size());
        std::string_view const bracket = ClosingBracket(bytes);
        Part& part = fPieces.fParts[open.fPart];
        Advance(open.fBytes.end - bracket.size(), part.fClose);
        if (!bytes.ends_with(bracket)) {
            ThrowStray(fCursor);
        }
        fCursor = open.fBytes.end;
        SetWidth(part, open.fComments == fCommentCount ? open.fWidth : kTooWide);
    }

    void SetWidth(Part& part, std::size_t width) {
        part.fWidth = width;
        if (!fOpen.empty()) {
            fOpen.back().fWidth = std::min(fOpen.back().fWidth + 1 + width, kTooWide);
        }
    }

    // Moves the cursor to what is expected at offset.
    void Advance(std::size_t offset, Surroundings& next) {
        ReadGap(next);
        if (fCursor != offset) {
            ThrowStray(fCursor);
        }
    }

    // Reads the blanks and comments between what was read last and next.
    void ReadGap(Surroundings& next) {
        next.fFirst = fPieces.fComments.size();
        std::size_t lines = SkipBlanks();
        while (fCursor < fText.size() && fText[fCursor] == '%') {
            Span const comment{
                fCursor, std::min(fText.find_first_of(kLineEnds, fCursor), fText.size())};
            if (lines == 0 && fLast != nullptr) {
                fLast->fBehind = comment;
            } else {
                fPieces.fComments.push_back({comment, lines > 1});
            }
            ++fCommentCount;
            fCursor = comment.end;
            lines = SkipBlanks();
        }
        next.fEnd = fPieces.fComments.size();
        next.fHasBlankLine = lines > 1;
        fLast = &next;
    }

    // The number of line ends that were skipped.
    std::size_t SkipBlanks() {
        std::size_t lines = 0;
        std::size_t const begin = fCursor;
        while (fCursor < fText.size() && format::kBlanks.Has(fText[fCursor])) {
            bool const isEnd =
                fText[fCursor] == '\n' ||
                (fText[fCursor] == '\r' && !fText.substr(fCursor).starts_with("\r\n"));
            lines += isEnd ? 1U : 0U;
            ++fCursor;
        }
        NoteLineEndIn(begin, fCursor);
        return lines;
    }

    // Between values, the first line end of the text is the one for all lines.
    void NoteLineEndIn(std::size_t begin, std::size_t end) {
        if (fPieces.fLineEnd.empty()) {
            std::string_view const text = fText.substr(begin, end - begin);
            std::size_t const found = std::min(text.find_first_of(kLineEnds), text.size());
            std::size_t const size = text.substr(found).starts_with("\r\n") ? 2 : 1;
            fPieces.fLineEnd = text.substr(found, size);
        }
    }

    [[noreturn]] void ThrowStray(std::size_t offset) const {
        auto const reaches = [&](Finding const& finding) { return finding.Bytes()->end >= offset; };
        auto const& findings = fDocument.Findings();
        auto const found = std::ranges::find_if(findings, reaches);
        if (found != findings.end()) {
            ThrowBecause(*found);
        }
        ThrowAt(fDocument, offset, "this belongs to no setting");
    }

    Document const& fDocument;
    std::string_view fText;
    Pieces fPieces;
    std::size_t fCursor = 0;
    std::size_t fCommentCount = 0;
    Surroundings* fLast = nullptr;
    std::vector<Open> fOpen;
};

// Writes the pieces of a document, with an explicit stack, so that deep nesting uses no more stack.
class LayoutWriter {
public:
    LayoutWriter(Document const& document, Pieces const& pieces, LayoutOptions const& options)
        : fDocument(document),
          fPieces(pieces),
          fOptions(options),
          fLineEnd(pieces.fLineEnd.empty() ? "\n" : pieces.fLineEnd) {}

    // Call it once.
    std::string Write() {
        Span const settings = SpanOfSettings(fDocument);
        fText = fDocument.Text().substr(0, settings.begin);
        WriteValue(fDocument.Entries().size(), 0, /*isFlat=*/false);
        while (!fFrames.empty()) {
            Frame& frame = fFrames.back();
            if (frame.fNext < frame.fChildren.size()) {
                WriteEntry(frame.fChildren[frame.fNext++]);
            } else {
                WriteClose();
            }
        }
        Separate(fPieces.fParts.back().fClose, fPieces.fKeyword, 0);
        return std::move(fText) + fDocument.Text().substr(fPieces.fKeywordBegin);
    }

private:
    // A dictionary or array that is being written.
    struct Frame {
        std::size_t fPart;
        std::size_t fDepth; // of its brackets
        bool fIsFlat;       // on one line
        std::vector<std::size_t> fChildren;
        std::size_t fNext = 0;
    };

    Span ValueOf(std::size_t place) const {
        auto const entries = fDocument.Entries();
        return place < entries.size() ? entries[place].value : SpanOfSettings(fDocument);
    }

    std::string_view Bytes(Span span) const {
        return std::string_view(fDocument.Text()).substr(span.begin, span.Size());
    }

    // References to frames end here, since writing a value may add one.
    void WriteEntry(std::size_t place) {
        std::size_t depth = fFrames.back().fDepth + 1;
        bool const isFlat = fFrames.back().fIsFlat;
        Part const& part = fPieces.fParts[place];
        Span const key = fDocument.Entries()[place].key;
        if (isFlat) {
            fText += " ";
        } else if (key.Size() == 0) {
            WriteAbove(part.fValue, depth);
            StartLine(depth, part.fValue.fHasBlankLine);
        } else {
            WriteAbove(part.fKey, depth);
            StartLine(depth, part.fKey.fHasBlankLine);
            fText += Bytes(key);
            WriteComment(part.fKey.fBehind);
            depth += Separate(part.fKey, part.fValue, depth + 1) ? 1U : 0U;
        }
        WriteValue(place, depth, isFlat);
    }

    void WriteValue(std::size_t place, std::size_t depth, bool isFlat) {
        Part const& part = fPieces.fParts[place];
        std::string_view const bytes = Bytes(ValueOf(place));
        std::size_t const bracket = ClosingBracket(bytes).size();
        fText += bracket == 0 ? bytes : bytes.substr(0, bracket);
        WriteComment(part.fValue.fBehind);
        if (bracket > 0) {
            bool const fits = part.fWidth < kTooWide && Column() - 1 + part.fWidth <= kMostColumns;
            fFrames.push_back({place, depth, isFlat || fits, ChildrenOf(place)});
            fMayHaveBlankLine = isFlat || fits;
        }
    }

    void WriteClose() {
        Frame const frame = std::move(fFrames.back());
        fFrames.pop_back();
        Part const& part = fPieces.fParts[frame.fPart];
        std::string_view const bytes = Bytes(ValueOf(frame.fPart));
        if (frame.fIsFlat) {
            fText += " ";
        } else if (bytes != "<<>>" || !fFrames.empty()) {
            // Without a blank, empty settings are read whatever follows them.
            WriteAbove(part.fClose, frame.fDepth + 1);
            StartLine(frame.fDepth, /*hasBlankLine=*/false);
        }
        fText += ClosingBracket(bytes);
        WriteComment(part.fClose.fBehind);
    }

    // Separates next from what was written last, by a blank, or by the comments between them: then
    // next begins a line of its own. Whether it does.
    bool Separate(Surroundings const& last, Surroundings const& next, std::size_t depth) {
        bool const isOnOwnLine = last.fBehind.Size() > 0 || next.fFirst != next.fEnd;
        if (isOnOwnLine) {
            WriteAbove(next, depth);
            StartLine(depth, /*hasBlankLine=*/false);
        } else {
            fText += " ";
        }
        return isOnOwnLine;
    }

    // The entries of a value in the order in which they are written.
    std::vector<std::size_t> ChildrenOf(std::size_t place) const {
        auto const entries = fDocument.Entries();
        bool const isRoot = place == entries.size();
        std::vector<std::size_t> children;
        std::size_t const end = isRoot ? place : entries[place].next;
        for (std::size_t i = isRoot ? 0 : place + 1; i < end; i = entries[i].next) {
            children.push_back(i);
        }
        if (fOptions.isSorted) {
            // All elements of an array have the same key, an empty one. A zero byte ends a key.
            std::ranges::stable_sort(children, {}, [&](std::size_t child) {
                std::string_view const key = Bytes(entries[child].key);
                return key.substr(0, key.find('\0'));
            });
        }
        return children;
    }

    void WriteAbove(Surroundings const& next, std::size_t depth) {
        for (std::size_t i = next.fFirst; i < next.fEnd; ++i) {
            StartLine(depth, fPieces.fComments[i].fHasBlankLine);
            fText += Bytes(fPieces.fComments[i].fBytes);
        }
    }

    void WriteComment(Span comment) {
        if (comment.Size() > 0) {
            fText += " ";
            fText += Bytes(comment);
        }
    }

    void StartLine(std::size_t depth, bool hasBlankLine) {
        fText += hasBlankLine && fMayHaveBlankLine ? fLineEnd : "";
        fText += fLineEnd;
        fLine = fText.size();
        fText.append(2 * std::min(depth, kDeepestIndent), ' ');
        fMayHaveBlankLine = true;
    }

    // The number of characters on the line that is being written.
    std::size_t Column() const { return WidthOf(std::string_view(fText).substr(fLine)); }

    Document const& fDocument;
    Pieces const& fPieces;
    LayoutOptions fOptions;
    std::string fLineEnd;
    std::string fText;
    std::size_t fLine = 0;          // where it begins
    bool fMayHaveBlankLine = false; // not directly behind an opening bracket
    std::vector<Frame> fFrames;
};

// The first finding of the document that a text with these findings lacks.
Finding const* Missing(Document const& document, Findings const& findings) {
    std::map<std::string_view, std::size_t> counts;
    for (Finding const& finding : findings) {
        ++counts[finding.Id()];
    }
    for (Finding const& finding : document.Findings()) {
        if (counts[finding.Id()]-- == 0) {
            return &finding;
        }
    }
    return nullptr;
}

// Throws Error (kUnwritable) if the result is not read as the document is.
void RequireSame(Document const& document, Document const& result) {
    if (Finding const* const missing = Missing(document, result.Findings())) {
        ThrowBecause(*missing);
    }
    bool const isSame = result.WhyRefused() == Refusal::kNone &&
                        document.Findings().size() == result.Findings().size() &&
                        document.Values() == result.Values() && document.Tail() == result.Tail();
    if (!isSame) {
        std::size_t const last = document.Entries().empty() ? document.Body()->begin
                                                            : document.Entries().back().value.begin;
        ThrowAt(document, last, "an empty dictionary must stay the last value");
    }
}

} // namespace

Document Document::Formatted(LayoutOptions const& options) const {
    RequireRead();
    if (!Body()) {
        return *this;
    }
    Pieces const pieces = LayoutReader(*this).Read();
    Document result(LayoutWriter(*this, pieces, options).Write());
    RequireSame(*this, result);
    return result;
}

} // namespace pdfsettings
