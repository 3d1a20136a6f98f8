#include "runtime/notation/Notation.h"

#include "format/NumberText.h"

#include <charconv>
#include <cmath>

namespace bibrt {

namespace {

constexpr std::size_t kIndent = 2;

// Deeper lines are not indented further, so the size of the text stays linear in the size of the
// value.
constexpr std::size_t kMaxIndentedLevels = 20;

// Whole numbers below this are written without an exponent.
constexpr double kMaxPlainNumber = 1e15;

struct WriteFrame {
    POSObject* fSource;
    std::size_t fPosition;
};

void AppendIndent(String& out, std::size_t depth) {
    out.append(kIndent * std::min(depth, kMaxIndentedLevels), ' ');
}

void AppendOctal(String& out, unsigned char byte) {
    static constexpr char kOctalDigits[] = "01234567";
    out.push_back('\\');
    for (int shift = 6; shift >= 0; shift -= 3) {
        out.push_back(kOctalDigits[(byte >> shift) & 7]);
    }
}

void AppendEscaped(String& out, char c) {
    static constexpr std::string_view kMeanings = "()\\\n\r\t";
    static constexpr std::string_view kNames = "()\\nrt";
    std::size_t const which = kMeanings.find(c);
    if (which != std::string_view::npos) {
        out.push_back('\\');
        out.push_back(kNames[which]);
    } else if (c < ' ' || c > '~') {
        AppendOctal(out, static_cast<unsigned char>(c));
    } else {
        out.push_back(c);
    }
}

void AppendText(String& out, std::string_view text) {
    out.push_back('(');
    for (char const c : text) {
        AppendEscaped(out, c);
    }
    out.push_back(')');
}

void AppendWord(String& out, std::string_view text) {
    if (IsPlainWord(text) && !IsNumber(text)) {
        out.append(text);
    } else {
        AppendText(out, text);
    }
}

// Appends a comment with the kind and the name, in which line ends become blanks: they would end
// the comment.
void AppendKind(String& out, std::string_view kind, std::string_view name) {
    out.append(" % ").append(kind);
    for (char const c : name) {
        out.push_back(c == '\n' || c == '\r' ? ' ' : c);
    }
}

void AppendNumber(String& out, double value) {
    if (std::isfinite(value)) {
        AppendDigits(out, value);
        return;
    }
    out.push_back('(');
    AppendDigits(out, value);
    out.push_back(')');
    AppendKind(out, "number", {});
}

void AppendBinData(String& out, POSBinData const& binData) {
    static constexpr char kHexDigits[] = "0123456789ABCDEF";
    out.push_back('(');
    for (unsigned long i = 0; i < binData.fSize; ++i) {
        out.push_back(kHexDigits[binData.Data()[i] >> 4]);
        out.push_back(kHexDigits[binData.Data()[i] & 15]);
    }
    out.push_back(')');
    AppendKind(out, "binary data of type ", binData.TypeName());
}

constexpr unsigned kFirstHigh = 0xD800;
constexpr unsigned kFirstLow = 0xDC00;
constexpr unsigned kPastLow = 0xE000;
constexpr unsigned kFirstPaired = 0x10000;
constexpr unsigned kReplacement = 0xFFFD;

bool IsLow(unsigned unit) noexcept {
    return unit >= kFirstLow && unit < kPastLow;
}

// The code point at position. Moves position past it.
unsigned
NextCodePoint(unsigned short const* units, unsigned long length, unsigned long& position) noexcept {
    unsigned const unit = units[position++];
    if (unit < kFirstHigh || unit >= kPastLow) {
        return unit;
    }
    if (IsLow(unit) || position == length || !IsLow(units[position])) {
        return kReplacement;
    }
    unsigned const low = units[position++];
    return kFirstPaired + ((unit - kFirstHigh) << 10) + (low - kFirstLow);
}

void AppendTail(String& out, unsigned codePoint, unsigned shift) {
    out.push_back(static_cast<char>(0x80U | ((codePoint >> shift) & 0x3FU)));
}

void AppendCodePoint(String& out, unsigned codePoint) {
    if (codePoint < 0x80) {
        out.push_back(static_cast<char>(codePoint));
        return;
    }
    if (codePoint < 0x800) {
        out.push_back(static_cast<char>(0xC0U | (codePoint >> 6)));
    } else if (codePoint < kFirstPaired) {
        out.push_back(static_cast<char>(0xE0U | (codePoint >> 12)));
        AppendTail(out, codePoint, 6);
    } else {
        out.push_back(static_cast<char>(0xF0U | (codePoint >> 18)));
        AppendTail(out, codePoint, 12);
        AppendTail(out, codePoint, 6);
    }
    AppendTail(out, codePoint, 0);
}

// Appends units in UTF-8; an unpaired surrogate becomes U+FFFD.
void AppendUtf8(String& out, unsigned short const* units, unsigned long length) {
    unsigned long position = 0;
    while (position < length) {
        AppendCodePoint(out, NextCodePoint(units, length, position));
    }
}

void AppendUnicodeString(String& out, POSUnicodeString const& string) {
    String utf8;
    AppendUtf8(utf8, string.Units(), string.fLength);
    AppendText(out, utf8);
    AppendKind(out, "16-bit string", {});
}

void AppendLeaf(String& out, POSObject& object) {
    if (IsOfType(&object, gNumberType)) {
        AppendNumber(out, static_cast<POSNumber&>(object).fValue);
    } else if (IsOfType(&object, gStringType)) {
        AppendWord(out, static_cast<POSString&>(object).View());
    } else if (IsOfType(&object, gUnicodeStringType)) {
        AppendUnicodeString(out, static_cast<POSUnicodeString&>(object));
    } else if (IsOfType(&object, gBinDataType)) {
        AppendBinData(out, static_cast<POSBinData&>(object));
    } else {
        char const* const name = object.fPrimary.instanceName;
        AppendText(out, name ? name : "");
        AppendKind(out, "container", {});
    }
    out.push_back('\n');
}

// Writes a leaf, or the opening bracket of a collection. False if object contains itself.
bool AppendStart(String& out, WalkStack<WriteFrame>& stack, POSObject& object) {
    if (!IsCollection(&object)) {
        AppendLeaf(out, object);
        return true;
    }
    out.append(IsOfType(&object, gDictType) ? "<\n" : "[\n");
    return stack.Push({&object, 0});
}

bool AppendNext(String& out, WalkStack<WriteFrame>& stack) {
    WriteFrame& frame = stack.Top();
    Child const child = NextChild(*frame.fSource, frame.fPosition);
    if (!child.fValue) {
        AppendIndent(out, stack.Depth() - 1);
        out.append(IsOfType(frame.fSource, gDictType) ? ">\n" : "]\n");
        stack.Pop();
        return true;
    }
    AppendIndent(out, stack.Depth());
    if (child.fKey) {
        AppendWord(out, child.fKey->fText);
        out.push_back(' ');
    }
    return AppendStart(out, stack, *child.fValue);
}

} // namespace

void AppendDigits(String& out, double value) {
    if (std::isnan(value)) {
        out.append(format::NaNText(value));
        return;
    }
    char digits[64];
    char* const end = digits + sizeof(digits);
    bool const isPlain = value == std::trunc(value) && std::abs(value) < kMaxPlainNumber &&
                         !(value == 0 && std::signbit(value));
    char const* const last = isPlain ? std::to_chars(digits, end, static_cast<long>(value)).ptr
                                     : std::to_chars(digits, end, value).ptr;
    out.append(digits, static_cast<std::size_t>(last - digits));
}

bool WriteNotation(POSObject& object, String& out) {
    WalkStack<WriteFrame> stack;
    return AppendStart(out, stack, object) &&
           stack.Walk([&](WalkStack<WriteFrame>& frames) { return AppendNext(out, frames); });
}

} // namespace bibrt
