// Values in the syntax of a settings file, and back.
#include "document/ParsedValue.h"

#include "format/NumberText.h"
#include "pdfsettings/Document.h"

#include <variant>

namespace pdfsettings {

namespace {

// Text to be written, or a value.
using Piece = std::variant<std::string, Value const*>;

// Writes a value with an explicit stack of pieces, so that deep nesting uses no more stack.
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
                WriteValue(*std::get<Value const*>(piece));
            }
        }
        return std::move(fText);
    }

private:
    void WriteValue(Value const& value) {
        switch (value.What()) {
        case Kind::kBool:
            fText += value.Bytes();
            break;
        case Kind::kNumber:
            fText += format::ExactText(value.As<double>());
            break;
        case Kind::kName:
            WriteBracketed("/", value, "");
            break;
        case Kind::kString:
            WriteBracketed("(", value, ")");
            break;
        case Kind::kHexString:
            WriteBracketed("<", value, ">");
            break;
        case Kind::kArray:
            PushArray(value.As<Array>());
            break;
        case Kind::kDictionary:
            PushDictionary(value.As<Dictionary>());
            break;
        }
    }

    void WriteBracketed(char const* open, Value const& value, char const* close) {
        fText += open;
        fText += value.Bytes();
        fText += close;
    }

    // Pending pieces point into the value being written, which outlives them.
    void PushArray(Array const& array) {
        fPieces.emplace_back("]");
        for (Value const* value = array.end(); value != array.begin();) {
            fPieces.emplace_back(" ");
            fPieces.emplace_back(--value);
        }
        fText += "[ ";
    }

    void PushDictionary(Dictionary const& dictionary) {
        fPieces.emplace_back(">>");
        for (Member const* member = dictionary.end(); member != dictionary.begin();) {
            --member;
            fPieces.emplace_back(" ");
            fPieces.emplace_back(&member->value);
            fPieces.emplace_back("/" + member->key + " ");
        }
        fText += "<< ";
    }

    std::string fText;
    std::vector<Piece> fPieces;
};

// Text as the only element of an array in a file, where nothing that is not a value is skipped.
constexpr std::string_view kBefore = "<<\n/K [ ";
constexpr std::string_view kBehind = "\n]\n>> setalembicorparams\n";

// The position in text for a position in that file.
Place PlaceInText(Place place) {
    constexpr std::size_t kLinesBefore = 1;
    constexpr std::size_t kColumnsBefore = kBefore.size() - std::string_view("<<\n").size();
    bool const isFirst = place.line <= kLinesBefore + 1;
    std::size_t const column =
        place.column > kColumnsBefore ? place.column - kColumnsBefore : std::size_t{1};
    return {isFirst ? 1 : place.line - kLinesBefore, isFirst ? column : place.column};
}

} // namespace

std::string Value::Text() const {
    return Writer().Write(*this);
}

std::string Value::WritableText() const {
    std::string text = Text();
    if (!detail::HasForm(*this, text)) {
        throw Error(Fault::kUnwritable, detail::NoFormMessage(text));
    }
    return text;
}

namespace detail {

bool HasForm(Value const& value, std::string const& text) {
    Document const alone("<< /K " + text + "\n>> setalembicorparams\n");
    return alone.Values() == Dictionary::Of({{"K", value}});
}

std::string NoFormMessage(std::string const& text) {
    constexpr std::size_t kMostShown = 100;
    return text.substr(0, kMostShown) + (text.size() > kMostShown ? "..." : "") +
           " cannot be written to a settings file so that it reads back as the same";
}

ParsedValue ParseValue(std::string_view text) {
    Document const file(std::string(kBefore).append(text).append(kBehind));
    Value const* const array = file.Values().Find("K");
    bool const isAlone = array != nullptr && file.Values().size() == 1 && file.Tail().empty();
    auto const elements = isAlone ? array->If<Array>() : std::nullopt;
    bool const isValue = elements && elements->size() == 1;
    if (!file.Findings().empty()) {
        Finding const& finding = file.Findings().front();
        throw Error(
            Fault::kSyntax,
            finding.Message(),
            {},
            PlaceInText(*finding.Where()),
            {},
            isValue ? finding.Id() : std::string());
    }
    if (!isValue) {
        throw Error(Fault::kSyntax, "expected a single value", {}, Place());
    }
    Span const span = file.Find("K/0")->value;
    return {(*elements)[0], file.Text().substr(span.begin, span.Size())};
}

} // namespace detail

Value Value::Parse(std::string_view text) {
    return detail::ParseValue(text).fValue;
}

} // namespace pdfsettings
