#include "pdfsettings/Settings.h"

#include "api/BIBRuntime.h"
#include "host/detail/FilePath.h"
#include "host/detail/RunningComponent.h"
#include "host/detail/RuntimeValues.h"
#include "host/save/Target.h"
#include "pdfsettings/Component.h"
#include "pdfsettings/Error.h"
#include "pdfsettings/RawAccess.h"

#include <charconv>
#include <filesystem>
#include <mutex>
#include <optional>

namespace pdfsettings {

namespace {

using detail::Bindings;
using detail::Ref;
using detail::Reported;
using detail::Share;

Ref<BIBPositionableStream> MakeStream(Bindings const& tables, std::string_view bytes) {
    detail::BufferRef const buffer = detail::MakeBuffer(tables, bytes);
    BIBPositionableStream* stream = nullptr;
    detail::ThrowIfError(tables, tables.streams.NewPositionableBufferStream(&stream, buffer.get()));
    return Share(tables, stream);
}

// The component gives no error for a value that it cannot write, but one of these two texts.
bool IsTextOfAFailure(std::string_view text) {
    return text.empty() || text == "<<\r\n>> setpagedevice\r\n";
}

std::optional<std::string> BytesAt(std::string const& path) {
    try {
        return ReadFile(path);
    } catch (Error const&) {
        return std::nullopt;
    }
}

// Also where the current folder changes.
std::string Absolute(std::string const& path) {
    return std::filesystem::absolute(path).string();
}

Ref<::PDFSettings>
NewFromDict(Bindings const& tables, Dictionary const& values, std::string const& schema) {
    Ref<POSDict> const dict = detail::BuildValues(tables, values);
    char const* const schemaText = detail::WholeText(schema);
    auto const make = tables.settings.NewFromDict;
    return Share(tables, Reported("NewFromDict", make, dict.get(), schemaText));
}

std::vector<Finding> ReadFindings(Bindings const& tables, POSArray* errors) {
    Ref<POSArray> const held = Share(tables, errors);
    std::vector<Finding> findings;
    detail::ReadRecords(tables, errors, [&](Dictionary const& record) {
        findings.push_back(
            {detail::FieldOf<Word>(record, "Key").text,
             detail::FieldOf<Word>(record, "ErrorMsg").text});
    });
    return findings;
}

std::vector<Finding> Judge(Bindings const& tables, ::PDFSettings* settings) {
    auto const judge = tables.settings.IsPDFSettingsValid;
    return ReadFindings(tables, Reported("IsPDFSettingsValid", judge, settings));
}

constexpr char kNamespaces[] = "OtherNamespaces";
constexpr std::string_view kBeforePosition = "OtherNamespaces/";

// Which elements are judged is the component's knowledge: it is asked about each alone, by a schema
// for which every element that is judged is one too many.
std::vector<std::size_t> JudgedPositions(Bindings const& tables, Array const& namespaces) {
    constexpr char kNoElement[] =
        "< PDFSettings < optional < OtherNamespaces < type array count 0 > > > >";
    std::vector<std::size_t> positions;
    for (std::size_t position = 0; position < namespaces.Size(); ++position) {
        Dictionary alone;
        alone.Set(kNamespaces, Array::Of({namespaces[position]}));
        if (!Judge(tables, NewFromDict(tables, alone, kNoElement).get()).empty()) {
            positions.push_back(position);
        }
    }
    return positions;
}

void RestorePosition(std::vector<std::size_t> const& positions, std::string& key) {
    char const* const end = key.data() + key.size();
    std::size_t position = positions.size();
    char const* const rest =
        std::from_chars(key.data() + kBeforePosition.size(), end, position).ptr;
    if (position < positions.size()) {
        key = std::string(kBeforePosition) + std::to_string(positions[position]) +
              std::string(rest, end);
    }
}

// The component leaves out the elements of OtherNamespaces that it does not judge before it counts
// them. Makes the positions in findings those of settings, which were judged.
void RestorePositions(
    Bindings const& tables, Dictionary const& settings, std::vector<Finding>& findings) {
    auto const* const namespaces = detail::As<Array>(settings.Get(kNamespaces));
    std::vector<std::string*> keys;
    for (Finding& finding : findings) {
        if (finding.key.starts_with(kBeforePosition)) {
            keys.push_back(&finding.key);
        }
    }
    if (namespaces != nullptr && !keys.empty()) {
        auto const positions = JudgedPositions(tables, *namespaces);
        for (std::string* const key : keys) {
            RestorePosition(positions, *key);
        }
    }
}

} // namespace

// Belongs to the component, which may end before.
struct Settings::State {
    // REQUIRES: the caller has its Turn.
    State(std::shared_ptr<detail::RunningComponent> owner, detail::Ref<::PDFSettings> made)
        : fRunning(std::move(owner)),
          fSettings(fRunning->Own(std::move(made))) {}
    ~State() { fRunning->GiveBack(fSettings); }
    State(State const&) = delete;
    State& operator=(State const&) = delete;

    // REQUIRES: the caller has its Turn.
    ::PDFSettings* Get() const noexcept { return fSettings->get(); }

    std::shared_ptr<detail::RunningComponent> fRunning;
    detail::RunningComponent::OwnedSettings::iterator fSettings;

    // The file that the settings are bound to, as it was read or written last.
    struct Binding {
        std::string fPath; // absolute; empty while there is none
        std::string fBytes;
    };

    Binding Bound() const {
        std::lock_guard const guard(fBindingInUse);
        return fBinding;
    }

    void Bind(std::string path, std::string bytes) {
        std::lock_guard const guard(fBindingInUse);
        fBinding = {std::move(path), std::move(bytes)};
    }

private:
    mutable std::mutex fBindingInUse;
    Binding fBinding;
};

Settings::Settings(std::unique_ptr<State> state) : fState(std::move(state)) {}
Settings::Settings(Settings&&) noexcept = default;
Settings& Settings::operator=(Settings&&) noexcept = default;
Settings::~Settings() = default;

Settings
Settings::FromText(Component const& component, std::string_view text, std::string const& schema) {
    detail::Turn const turn(*component.fRunning);
    Ref<BIBPositionableStream> const stream = MakeStream(*turn, text);
    char const* const schemaText = detail::WholeText(schema);
    auto const make = turn->settings.NewFromStream;
    auto made = Share(*turn, Reported("NewFromStream", make, stream.get(), schemaText));
    return Settings(std::make_unique<State>(component.fRunning, std::move(made)));
}

Settings
Settings::FromFile(Component const& component, std::string const& path, std::string const& schema) {
    std::string bytes = ReadFile(path);
    Settings settings = FromText(component, bytes, schema);
    // A descriptor cannot be read again.
    if (!detail::NamesDescriptor(path)) {
        settings.fState->Bind(Absolute(path), std::move(bytes));
    }
    return settings;
}

Settings Settings::FromValues(
    Component const& component, Dictionary const& values, std::string const& schema) {
    detail::Turn const turn(*component.fRunning);
    auto made = NewFromDict(*turn, values, schema);
    return Settings(std::make_unique<State>(component.fRunning, std::move(made)));
}

Dictionary Settings::Values() const {
    detail::Turn const turn(*fState->fRunning);
    auto* const values = Reported("GetSettings", turn->settings.GetSettings, fState->Get());
    Ref<POSDict> const dict = Share(*turn, values);
    return detail::ReadValues(*turn, dict.get());
}

std::string Settings::Text() const {
    detail::Turn const turn(*fState->fRunning);
    auto const write = turn->settings.GetJobOptionsData;
    auto const stream = Share(*turn, Reported("GetJobOptionsData", write, fState->Get()));
    std::string text = detail::ReadStream(*turn, stream.get());
    if (IsTextOfAFailure(text)) {
        throw Error("a value of these settings has no form in a settings file");
    }
    return text;
}

bool Settings::IsDirty() const {
    auto const [path, bytes] = fState->Bound();
    return path.empty() || BytesAt(path) != bytes;
}

SaveWarnings Settings::Save(SaveOptions const& options) {
    auto const [path, bytes] = fState->Bound();
    if (path.empty()) {
        throw Error("these settings are bound to no file");
    }
    std::string text = Text();
    SaveWarnings warnings = SaveSafely(path, text, bytes, options);
    fState->Bind(path, std::move(text));
    return warnings;
}

SaveWarnings Settings::Write(std::string const& path) {
    // The folder before the turn, as an edit has it.
    detail::Target const folder = detail::FolderOf(path);
    std::optional<detail::FolderLock> lock;
    if (folder.folder.IsOpen()) {
        lock.emplace(folder, detail::Deadline(SaveOptions().timeout));
    }
    detail::Turn const turn(*fState->fRunning);
    // The component writes what it has even of settings that have no form in a file, and would put
    // that in the place of a good file.
    std::string text = Text();
    // The component wants a folder in the path.
    std::string const whole = path.find('/') == std::string::npos ? "./" + path : path;
    detail::BufferRef const buffer = detail::MakePath(*turn, whole);
    try {
        detail::ThrowIfError(*turn, turn->settings.Write(fState->Get(), buffer.get()));
    } catch (Error const& error) {
        // The component reports all failures of the file service by the same word; the system's
        // reason takes its place.
        if (std::string_view(error.what()) != "Error") {
            throw;
        }
        throw Error(detail::WhyUnwritable(path));
    }
    // The component makes the text once more, and keeps quiet when memory runs out over it.
    if (BytesAt(path) != text) {
        throw Error("the settings could not be written whole: " + path);
    }
    fState->Bind(Absolute(path), std::move(text));
    bool const isWarned = lock && !lock->Warning().empty();
    return isWarned ? SaveWarnings{lock->Warning()} : SaveWarnings();
}

std::vector<Finding> Settings::Validate() const {
    detail::Turn const turn(*fState->fRunning);
    auto findings = Judge(*turn, fState->Get());
    if (!findings.empty()) {
        RestorePositions(*turn, Values(), findings);
    }
    return findings;
}

std::vector<Finding> Settings::Set(Dictionary const& changes) {
    detail::Turn const turn(*fState->fRunning);
    Ref<POSDict> const dict = detail::BuildValues(*turn, changes);
    auto const set = turn->settings.SetSettings;
    auto findings = ReadFindings(*turn, Reported("SetSettings", set, fState->Get(), dict.get()));
    bool const isChanged = changes.Get(kNamespaces) != nullptr;
    if (!findings.empty()) {
        RestorePositions(*turn, isChanged ? changes : Values(), findings);
    }
    return findings;
}

RawAccess::RawAccess(Component const& component)
    : fRunning(component.fRunning),
      fTurn(std::make_unique<detail::Turn>(*fRunning)) {}

RawAccess::~RawAccess() = default;

BIBLookupProc RawAccess::Lookup() const noexcept {
    return &BIBRuntimeLookup;
}

::PDFSettings* RawAccess::Object(Settings const& settings) const noexcept {
    return settings.fState->Get();
}

} // namespace pdfsettings
