#include "pdfsettings/Settings.h"

#include "host/detail/FilePath.h"
#include "host/detail/NamespacePositions.h"
#include "host/detail/ReportChannel.h"
#include "host/detail/RuntimeValues.h"
#include "host/detail/SettingsState.h"
#include "host/save/FolderLock.h"
#include "pdfsettings/Component.h"
#include "pdfsettings/Error.h"

#include <filesystem>
#include <optional>

namespace pdfsettings {

namespace {

using detail::Bindings;
using detail::Ref;
using detail::ReportedCall;

// Runs the component's writing of a file. It reports all failures of the file service by the same
// word; the system's reason takes its place.
template <class Call>
void WriteFileBy(Call call, std::string const& path) {
    try {
        call();
    } catch (Error const& error) {
        if (std::string_view(error.what()) != "Error") {
            throw;
        }
        throw Error(detail::WhyUnwritable(path));
    }
}

Ref<BIBPositionableStream> MakeStream(Bindings const& tables, std::string_view bytes) {
    detail::BufferRef const buffer = detail::MakeBuffer(tables, bytes);
    BIBPositionableStream* stream = nullptr;
    detail::ThrowIfError(tables, tables.streams.NewPositionableBufferStream(&stream, buffer.get()));
    return detail::Share(tables, stream);
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

std::string TextOf(Dictionary const& record, char const* key) {
    Value const* const value = record.Get(key);
    auto const* const word = value == nullptr ? nullptr : value->If<Word>();
    return word == nullptr ? std::string() : word->text;
}

std::vector<Finding> ReadFindings(Bindings const& tables, POSArray* errors) {
    std::vector<Finding> findings;
    Array const records = detail::ReadValues(tables, errors);
    for (std::size_t place = 0; place < records.Size(); ++place) {
        if (auto const* const record = records[place].If<Dictionary>()) {
            findings.push_back({TextOf(*record, "Key"), TextOf(*record, "ErrorMsg")});
        }
    }
    return findings;
}

} // namespace

Settings::Settings(std::unique_ptr<State> state) : fState(std::move(state)) {}
Settings::Settings(Settings&&) noexcept = default;
Settings& Settings::operator=(Settings&&) noexcept = default;
Settings::~Settings() = default;

Settings
Settings::FromText(Component const& component, std::string_view text, std::string const& schema) {
    detail::Turn const turn(*component.fRunning);
    Bindings const& tables = turn.Tables();
    Ref<BIBPositionableStream> const stream = MakeStream(tables, text);
    char const* const schemaText = detail::WholeText(schema);
    Ref<::PDFSettings> made =
        detail::Share(tables, ReportedCall("NewFromStream", [&] {
                          return tables.settings.NewFromStream(stream.get(), schemaText);
                      }));
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
    Bindings const& tables = turn.Tables();
    Ref<POSDict> const dict = detail::BuildValues(tables, values);
    char const* const schemaText = detail::WholeText(schema);
    Ref<::PDFSettings> made =
        detail::Share(tables, ReportedCall("NewFromDict", [&] {
                          return tables.settings.NewFromDict(dict.get(), schemaText);
                      }));
    return Settings(std::make_unique<State>(component.fRunning, std::move(made)));
}

Dictionary Settings::Values() const {
    detail::Turn const turn(*fState->fRunning);
    Bindings const& tables = turn.Tables();
    Ref<POSDict> const dict = detail::Share(tables, ReportedCall("GetSettings", [&] {
                                                return tables.settings.GetSettings(fState->Get());
                                            }));
    return detail::ReadValues(tables, dict.get());
}

std::string Settings::Text() const {
    detail::Turn const turn(*fState->fRunning);
    Bindings const& tables = turn.Tables();
    Ref<BIBPositionableStream> const stream =
        detail::Share(tables, ReportedCall("GetJobOptionsData", [&] {
                          return tables.settings.GetJobOptionsData(fState->Get());
                      }));
    std::string text = detail::ReadStream(tables, stream.get());
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
    Bindings const& tables = turn.Tables();
    // The component writes what it has even of settings that have no form in a file, and would put
    // that in the place of a good file.
    std::string text = Text();
    // The component wants a folder in the path.
    std::string const whole = path.find('/') == std::string::npos ? "./" + path : path;
    detail::BufferRef const buffer = detail::MakePath(tables, whole);
    WriteFileBy(
        [&] { detail::ThrowIfError(tables, tables.settings.Write(fState->Get(), buffer.get())); },
        path);
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
    Bindings const& tables = turn.Tables();
    Ref<POSArray> const errors =
        detail::Share(tables, ReportedCall("IsPDFSettingsValid", [&] {
                          return tables.settings.IsPDFSettingsValid(fState->Get());
                      }));
    auto findings = ReadFindings(tables, errors.get());
    if (!findings.empty()) {
        detail::RestorePositions(tables, Values(), findings);
    }
    return findings;
}

std::vector<Finding> Settings::Set(Dictionary const& changes) {
    detail::Turn const turn(*fState->fRunning);
    Bindings const& tables = turn.Tables();
    Ref<POSDict> const dict = detail::BuildValues(tables, changes);
    Ref<POSArray> const errors =
        detail::Share(tables, ReportedCall("SetSettings", [&] {
                          return tables.settings.SetSettings(fState->Get(), dict.get());
                      }));
    auto findings = ReadFindings(tables, errors.get());
    bool const isChanged = changes.Get("OtherNamespaces") != nullptr;
    if (!findings.empty()) {
        detail::RestorePositions(tables, isChanged ? changes : Values(), findings);
    }
    return findings;
}

} // namespace pdfsettings
