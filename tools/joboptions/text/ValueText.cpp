#include "tools/joboptions/text/ValueText.h"

#include "format/NumberText.h"
#include "tools/joboptions/text/Utf8.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <iterator>
#include <variant>

namespace joboptions {

using namespace std::string_literals;
using pdfsettings::Array;
using pdfsettings::Dictionary;
using pdfsettings::Value;

namespace {

// Text that waits to be written, or a value that waits to be taken apart.
using Piece = std::variant<std::string, Value const*>;

// Writes a value from a list of pieces, the last one first, so that no nesting is too deep.
class Writer {
public:
    std::string Write(Value const& value) {
        fPieces.emplace_back(&value);
        while (!fPieces.empty()) {
            Piece const piece = std::move(fPieces.back());
            fPieces.pop_back();
            if (auto const* const text = std::get_if<std::string>(&piece)) {
                fText += *text;
            } else {
                std::visit(*this, std::get<Value const*>(piece)->Get());
            }
        }
        return std::move(fText);
    }

    void operator()(pdfsettings::Word const& word) {
        bool const isBoolean = word.text == "true" || word.text == "false";
        fText += (isBoolean ? "" : "/") + VisibleText(word.text);
    }
    void operator()(double number) { fText += NumberText(number); }
    void operator()(pdfsettings::String const& string) {
        fText += "(" + VisibleText(string.bytes) + ")";
    }
    void operator()(pdfsettings::HexString const& string) {
        fText += "<" + VisibleText(string.text) + ">";
    }
    void operator()(pdfsettings::Binary const& data) { fText += VisibleText(data.bytes); }

    void operator()(pdfsettings::Text16 const& text) {
        fText += "<FEFF";
        for (char16_t const unit : text) {
            fText += fmt::format("{:04X}", static_cast<unsigned>(unit));
        }
        fText += ">";
    }

    void operator()(Array const& array) {
        fPieces.emplace_back("]"s);
        for (std::size_t index = array.Size(); index-- > 0;) {
            fPieces.emplace_back(" "s);
            fPieces.emplace_back(&array[index]);
        }
        fText += "[ ";
    }

    void operator()(Dictionary const& dictionary) {
        fPieces.emplace_back(">>"s);
        for (std::size_t place = dictionary.Size(); place-- > 0;) {
            fPieces.emplace_back(" "s);
            fPieces.emplace_back(&dictionary.ValueAt(place));
            fPieces.emplace_back("/" + VisibleText(dictionary.KeyAt(place)) + " ");
        }
        fText += "<< ";
    }

private:
    std::string fText;
    std::vector<Piece> fPieces;
};

} // namespace

std::string OneLine(Value const& value) {
    return Writer().Write(value);
}

std::string CommaList(std::vector<Value> const& values) {
    std::string text;
    for (Value const& value : values) {
        text += (text.empty() ? "" : ", ") + OneLine(value);
    }
    return text;
}

bool IsCollection(Value const& value) {
    return value.If<Array>() != nullptr || value.If<Dictionary>() != nullptr;
}

// The reader takes a number without a point for a whole number of 64 bits: 1e5 would read as 1, and
// what has no such form needs the point.
std::string NumberText(double number) {
    std::string text = format::ShortestText(number);
    std::size_t const exponent = std::min(text.find('e'), text.size());
    bool const isNegativeZero = number == 0 && std::signbit(number);
    bool const isWholeForm = std::abs(number) < 0x1p63 && exponent == text.size();
    bool const hasPoint = text.find('.') != std::string::npos;
    if (std::isfinite(number) && !hasPoint && (isNegativeZero || !isWholeForm)) {
        text.insert(exponent, ".0");
    }
    return text;
}

} // namespace joboptions
