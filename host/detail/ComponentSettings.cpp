#include "host/detail/ComponentSettings.h"

#include <charconv>

namespace pdfsettings::detail {

namespace {

// For a value that it cannot write, the component returns one of these texts and no error.
bool IsTextOfAFailure(std::string_view text) {
    return text.empty() || text == "<<\r\n>> setpagedevice\r\n";
}

Ref<::PDFSettings> NewFromText(Turn const& turn, std::string_view text, std::string const& schema) {
    Ref<BIBPositionableStream> const stream = MakeStream(*turn, text);
    auto const make = turn->settings.NewFromStream;
    return Share(*turn, Reported("NewFromStream", make, stream.get(), schema.c_str()));
}

std::vector<Message> Validated(Turn const& turn, ::PDFSettings* settings) {
    auto const validate = turn->settings.IsPDFSettingsValid;
    auto const errors = Share(*turn, Reported("IsPDFSettingsValid", validate, settings));
    FieldReader const key(*turn, "Key");
    FieldReader const message(*turn, "ErrorMsg");
    std::vector<Message> messages;
    ForEachDict(*turn, errors.get(), [&](POSDict* record) {
        messages.emplace_back(key.Text(record), message.Text(record));
    });
    return messages;
}

constexpr std::string_view kNamespaces = "OtherNamespaces";
constexpr std::string_view kBeforePosition = "OtherNamespaces/";

void RestorePosition(std::vector<std::size_t> const& positions, std::string& path) {
    char const* const end = path.data() + path.size();
    std::size_t position = positions.size();
    char const* const rest =
        std::from_chars(path.data() + kBeforePosition.size(), end, position).ptr;
    if (position < positions.size()) {
        path = std::string(kBeforePosition) + std::to_string(positions[position]) +
               std::string(rest, end);
    }
}

} // namespace

ComponentSettings::ComponentSettings(
    Turn const& turn, std::string_view text, std::string const& schema)
    : fTurn(turn),
      fSettings(NewFromText(turn, text, schema)) {}

namespace {

// The positions of the elements that the component validates. Only the component knows which: each
// element is validated alone against a schema that allows no element, so every one that counts is
// rejected.
std::vector<std::size_t>
ValidatedPositions(Turn const& turn, Document const& document, std::size_t count) {
    static std::string const kNoElement =
        "< PDFSettings < optional < OtherNamespaces < type array count 0 > > > >";
    std::vector<std::size_t> positions;
    for (std::size_t position = 0; position < count; ++position) {
        std::string const path = std::string(kBeforePosition) + std::to_string(position);
        Span const element = document.Find(path)->value;
        std::string const text = "<< /OtherNamespaces [ " +
                                 document.Text().substr(element.begin, element.Size()) +
                                 " ]\n>> setalembicorparams";
        auto const alone = NewFromText(turn, text, kNoElement);
        if (!Validated(turn, alone.get()).empty()) {
            positions.push_back(position);
        }
    }
    return positions;
}

} // namespace

// The component counts only the elements of OtherNamespaces that it validates. The positions in the
// result are those in the settings.
std::vector<Message> ComponentSettings::Validate(Document const& document) {
    auto messages = Validated(fTurn, fSettings.get());
    std::vector<std::string*> paths;
    for (Message& message : messages) {
        if (message.first.starts_with(kBeforePosition)) {
            paths.push_back(&message.first);
        }
    }
    Value const* const value = paths.empty() ? nullptr : document.Values().Find(kNamespaces);
    auto const namespaces = value == nullptr ? std::nullopt : value->If<Array>();
    if (namespaces) {
        auto const positions = ValidatedPositions(fTurn, document, namespaces->size());
        for (std::string* const path : paths) {
            RestorePosition(positions, *path);
        }
    }
    return messages;
}

std::string ComponentSettings::Text() {
    auto const write = fTurn->settings.GetJobOptionsData;
    auto const stream = Share(*fTurn, Reported("GetJobOptionsData", write, fSettings.get()));
    std::string text = ReadStream(*fTurn, stream.get());
    if (IsTextOfAFailure(text)) {
        throw Error(Fault::kUnwritable, "a value of these settings has no form in a settings file");
    }
    return text;
}

SettingsValues ComponentSettings::Values() {
    auto* const values = Reported("GetSettings", fTurn->settings.GetSettings, fSettings.get());
    Ref<POSDict> const dict = Share(*fTurn, values);
    return ReadValues(*fTurn, dict.get());
}

} // namespace pdfsettings::detail
