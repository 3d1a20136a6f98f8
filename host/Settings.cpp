#include "pdfsettings/Settings.h"

#include "document/MakeSequence.h"
#include "document/ParsedValue.h"
#include "format/SettingPath.h"
#include "format/Tokens.h"
#include "host/detail/ComponentSettings.h"
#include "host/detail/Patterns.h"
#include "host/detail/Validation.h"
#include "pdfsettings/raw/RawAccess.h"

#include <algorithm>
#include <list>
#include <optional>
#include <strings.h>
#include <system_error>
#include <utility>
#include <vector>

namespace pdfsettings {

namespace {

// The document of a text. Throws Error (kSyntax).
Document Read(std::string text) {
    Document document(std::move(text));
    document.RequireRead();
    return document;
}

// As above, for the bytes of a file; the error has the file.
Document Read(std::string bytes, FilePath const& file) {
    try {
        return Read(std::move(bytes));
    } catch (Error const& error) {
        throw error.In(file);
    }
}

// Throws an error with the first of values that cannot be written, alone or after those before it.
[[noreturn]] void ThrowUnwritable(Dictionary const& values) {
    // The time for each is linear in the size of those before it.
    constexpr std::size_t kMostTogether = 1000;
    Document document{std::string()};
    for (auto const& [key, value] : values) {
        bool const isKey = format::FirstPart(key).size() == key.size() && key != format::kTailKey;
        if (!isKey) {
            throw Error(Fault::kKey, key + ": this cannot be the key of a setting");
        }
        Document const before = values.size() <= kMostTogether ? document : Document(std::string());
        document = before.With(key, value);
    }
    throw Error(Fault::kUnwritable, "these values cannot be written so that they read back");
}

Findings AsFindings(std::vector<Finding> findings) {
    return detail::MakeSequence::From(std::move(findings));
}

} // namespace

struct Settings::State {
    State(Document const& document, Schema const& schema)
        : fDocument(document),
          fSchema(schema),
          fSaved(fDocument.Text()) {}

    // Binds the settings to a file.
    void Bind(FilePath const& file, std::optional<std::string> bytes) {
        fFile = std::filesystem::absolute(file);
        fSeen = std::move(bytes);
        fSaved = fSeen.value_or("");
    }

    Document fDocument;
    Schema fSchema;
    FilePath fFile;
    std::optional<std::string> fSeen; // the file's bytes when last read or saved
    std::string fSaved;               // the text that counts as unmodified
};

Settings::Settings(std::shared_ptr<State> state) noexcept : fState(std::move(state)) {}
Settings::Settings(Settings const& other) : fState(std::make_shared<State>(*other.fState)) {}
Settings::Settings(Settings&&) noexcept = default;
Settings::~Settings() = default;

// Assigns to the State in place, so that an edit begun before detects the change.
Settings& Settings::operator=(Settings const& other) {
    if (this != &other) {
        *this = Settings(other);
    }
    return *this;
}

Settings& Settings::operator=(Settings&& other) noexcept {
    if (fState != nullptr && other.fState != nullptr && fState != other.fState) {
        *fState = std::move(*other.fState);
    } else {
        fState = std::move(other.fState);
    }
    return *this;
}

Settings::Settings(Schema const& schema)
    : fState(std::make_shared<State>(Document(std::string()), schema)) {}

Settings Settings::Open(FilePath const& file, Schema const& schema) {
    std::string bytes = ReadFile(file);
    auto state = std::make_shared<State>(Read(bytes, file), schema);
    if (!IsStream(file)) {
        state->Bind(file, std::move(bytes));
    }
    return Settings(std::move(state));
}

Settings Settings::Open(FileLock const& lock, Schema const& schema) {
    if (IsStream(lock.File())) {
        return Open(lock.File(), schema);
    }
    auto state = std::make_shared<State>(Read(lock.Bytes().value_or(""), lock.File()), schema);
    state->Bind(lock.File(), lock.Bytes());
    return Settings(std::move(state));
}

Settings Settings::Parse(std::string_view text, Schema const& schema) {
    return Settings(std::make_shared<State>(Read(std::string(text)), schema));
}

Settings Settings::From(Dictionary const& values, std::string_view tail, Schema const& schema) {
    // Settings without entries must have nothing between their brackets.
    std::string text = values.empty() ? "<<" : "<<\n";
    for (auto const& [key, value] : values) {
        text += "  /" + key + " " + value.Text() + "\n";
    }
    text += ">> setalembicorparams\n";
    text += tail;
    Document document(text);
    bool const isRead = document.WhyRefused() == Refusal::kNone && document.Tail() == tail;
    bool const isReserved = values.FindKey(format::kTailKey) != nullptr;
    if (!isRead || isReserved || !(document.Values() == values)) {
        ThrowUnwritable(values);
    }
    auto state = std::make_shared<State>(document, schema);
    state->fSaved.clear();
    return Settings(std::move(state));
}

Dictionary const& Settings::Values() const& noexcept {
    return fState->fDocument.Values();
}

std::string const& Settings::Tail() const& noexcept {
    return fState->fDocument.Tail();
}

std::string const& Settings::Text() const& noexcept {
    return fState->fDocument.Text();
}

Document const& Settings::Source() const& noexcept {
    return fState->fDocument;
}

Schema const& Settings::Rules() const noexcept {
    return fState->fSchema;
}

Value Settings::GetValue(std::string_view path) const {
    if (Value const* const value = Values().Find(path)) {
        return *value;
    }
    Rule const* const rule = fState->fSchema.Find(path);
    if (rule != nullptr && rule->Default() != nullptr) {
        return *rule->Default();
    }
    return fState->fDocument.At(path);
}

void Settings::ThrowKind(std::string_view path, Value const& value, char const* expected) {
    try {
        value.ThrowKind(expected);
    } catch (Error const& error) {
        throw Error(error.Code(), std::string(path) + ": " + error.Message());
    }
}

Findings Settings::Validate() const {
    auto findings = detail::Validate(fState->fDocument, fState->fSchema);
    return AsFindings(detail::WithHints(std::move(findings), fState->fDocument, fState->fSchema));
}

Findings Settings::Warnings() const {
    return AsFindings(detail::Warnings(fState->fDocument, fState->fSchema));
}

Findings Settings::Check(std::string_view path, Value const& value) const {
    Document const& document = fState->fDocument;
    try {
        Document const changed = document.With(path, value);
        auto after = detail::Validate(changed, fState->fSchema);
        if (!after.empty()) {
            auto const before = detail::Validate(document, fState->fSchema);
            after = detail::NewFindings(before, std::move(after), {});
            after = detail::WithHints(std::move(after), changed, fState->fSchema);
        }
        return AsFindings(std::move(after));
    } catch (Error const& error) {
        bool const isOfValue = error.Code() == Fault::kNoValue || error.Code() == Fault::kKey ||
                               error.Code() == Fault::kUnwritable;
        if (!isOfValue) {
            throw;
        }
        // A finding has its path beside the message.
        std::string const prefix = std::string(path) + ": ";
        std::string const& message = error.Message();
        return AsFindings({detail::MakeFinding(
            document,
            Severity::kError,
            "unwritable",
            detail::SpanOf(document, path),
            std::string(path),
            message.substr(message.starts_with(prefix) ? prefix.size() : 0))});
    }
}

bool Settings::IsModified() const noexcept {
    return fState->fDocument.Text() != fState->fSaved;
}

bool Settings::IsStale() const {
    if (fState->fFile.empty()) {
        return false;
    }
    try {
        return ReadFile(fState->fFile) != fState->fSeen;
    } catch (Error const& error) {
        return fState->fSeen || error.System() != std::errc::no_such_file_or_directory;
    }
}

FilePath const& Settings::File() const noexcept {
    return fState->fFile;
}

void Settings::Reload() {
    *this = Open(fState->fFile, fState->fSchema);
}

SaveWarnings Settings::Save(OnConflict onConflict, std::chrono::milliseconds wait) {
    auto warnings = SaveSafely(fState->fFile, Text(), fState->fSeen, onConflict, wait);
    fState->Bind(fState->fFile, Text());
    return warnings;
}

SaveWarnings
Settings::SaveAs(FilePath const& file, OnConflict onConflict, std::chrono::milliseconds wait) {
    if (onConflict == OnConflict::kRefuse && LookAt(file, wait)) {
        throw Error(Fault::kConflict, "the file exists already", file);
    }
    auto warnings = SaveSafely(file, Text(), std::nullopt, onConflict, wait);
    if (!IsStream(file)) {
        fState->Bind(file, Text());
    }
    return warnings;
}

SaveWarnings Settings::Save(FileLock& lock, OnConflict onConflict) {
    bool const isSame = fState->fFile.empty() || fState->fFile == lock.File();
    if (onConflict == OnConflict::kRefuse && (!isSame || lock.Bytes() != fState->fSeen)) {
        char const* const reason =
            isSame ? "changed since it was read" : "the lock is on another file";
        throw Error(Fault::kConflict, reason, lock.File());
    }
    auto warnings = lock.Save(Text(), onConflict);
    fState->Bind(lock.File(), Text());
    return warnings;
}

std::string Settings::CanonicalText() const {
    return detail::CanonicalText(fState->fDocument);
}

struct Settings::Edit::State {
    explicit State(std::shared_ptr<Settings::State> settings)
        : fSettings(std::move(settings)),
          fBase(fSettings->fDocument),
          fResult(fBase) {}

    // What the schema rejects now and did not reject before.
    std::vector<Finding> Check() const {
        Schema const& schema = fSettings->fSchema;
        auto after = detail::Validate(fResult, schema);
        if (after.empty()) {
            return after;
        }
        after = detail::NewFindings(
            detail::Validate(fBase, schema), std::move(after), fRemovedElements);
        return detail::WithHints(std::move(after), fResult, schema);
    }

    // The array at a path, or its default, or else an empty one. Throws Error (kKind) for another
    // value.
    Array ArrayAt(std::string_view path) const {
        Rule const* const rule = fSettings->fSchema.Find(path);
        Value const* const stored = fResult.Values().Find(path);
        Value const* const value = stored != nullptr || rule == nullptr ? stored : rule->Default();
        if (value != nullptr && value->What() != Kind::kArray) {
            throw Error(Fault::kKind, std::string(path) + " is not an array");
        }
        return value == nullptr ? Array() : value->As<Array>();
    }

    // The result with that array stored. Throws as Document::With.
    Document WithArray(std::string_view path, Array const& array) const {
        return fResult.Values().Find(path) != nullptr ? fResult : fResult.With(path, Value(array));
    }

    // What its constraints advise against now and did not before.
    std::vector<Finding> Warnings() const {
        Schema const& schema = fSettings->fSchema;
        return detail::NewFindings(
            detail::Warnings(fBase, schema), detail::Warnings(fResult, schema), fRemovedElements);
    }

    std::shared_ptr<Settings::State> fSettings;
    Document fBase; // as the settings were when the edit began
    Document fResult;
    std::vector<std::string> fRemovedElements; // elements of arrays, by path, in order
};

Settings::Edit Settings::Change() & {
    return Edit(std::make_unique<Edit::State>(fState));
}

Settings::Edit::Edit(std::unique_ptr<State> state) noexcept : fState(std::move(state)) {}
Settings::Edit::Edit(Edit&&) noexcept = default;
Settings::Edit::~Edit() = default;

Settings::Edit& Settings::Edit::Set(std::string_view path, Value const& value) {
    fState->fResult = fState->fResult.With(path, value);
    return *this;
}

namespace {

// The name that text would be with a slash and the right case; empty if there is none.
std::string NameMeant(Rule const* rule, std::string const& text) {
    bool const isForName = rule == nullptr || rule->What() == Kind::kName;
    bool const isWord =
        !text.empty() &&
        text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789") ==
            std::string::npos &&
        (text[0] < '0' || text[0] > '9');
    if (!isForName || !isWord) {
        return {};
    }
    if (rule == nullptr || rule->Allowed().empty()) {
        return text;
    }
    for (Value const& value : rule->Allowed()) {
        auto const name = value.If<Name>();
        if (name && strcasecmp(name->text.c_str(), text.c_str()) == 0) {
            return name->text;
        }
    }
    return {};
}

// Throws an error that says what the schema expects in place of text, which is not a value.
[[noreturn]] void
ThrowNoValue(Schema const& schema, std::string_view path, std::string const& text) {
    Rule const* const rule = schema.Find(path);
    std::string const meant = NameMeant(rule, text);
    std::string const expected =
        rule != nullptr ? rule->ExpectedText()
                        : "true, false, a number, /Name, (text), <FEFF>, [ … ] or << … >>";
    throw Error(
        Fault::kSyntax,
        std::string(path) + ": \"" + text + "\" is not a value; expected " + expected +
            (meant.empty() ? "" : "; did you mean /" + meant + "?"),
        {},
        Place());
}

} // namespace

namespace {

// The value of a text for the setting at a path. Throws Error (kSyntax) that names the path.
Value ParseFor(Schema const& schema, std::string_view path, std::string_view text) {
    try {
        return Value::Parse(text);
    } catch (Error const& error) {
        if (error.Id().empty()) {
            ThrowNoValue(schema, path, std::string(text));
        }
        throw Error(
            error.Code(),
            std::string(path) + ": " + error.Message(),
            {},
            error.Where(),
            {},
            error.Id());
    }
}

std::string ElementPath(std::string_view array, std::size_t place) {
    return std::string(array) + "/" + std::to_string(place);
}

// As ParseFor, for an element of the array at a path.
Value ParseElement(Schema const& schema, std::string_view array, std::string_view text) {
    return ParseFor(schema, ElementPath(array, 0), text);
}

} // namespace

Settings::Edit& Settings::Edit::SetText(std::string_view path, std::string_view text) {
    ParseFor(fState->fSettings->fSchema, path, text);
    fState->fResult = fState->fResult.WithText(path, text);
    return *this;
}

Settings::Edit& Settings::Edit::AddElement(std::string_view path, Value const& element) {
    Array const array = fState->ArrayAt(path);
    if (std::ranges::find(array, element) == array.end()) {
        Document const document = fState->WithArray(path, array);
        fState->fResult = document.With(ElementPath(path, array.size()), element);
    }
    return *this;
}

Settings::Edit& Settings::Edit::AddElementText(std::string_view path, std::string_view text) {
    Value const element = ParseElement(fState->fSettings->fSchema, path, text);
    Array const array = fState->ArrayAt(path);
    if (std::ranges::find(array, element) == array.end()) {
        Document const document = fState->WithArray(path, array);
        fState->fResult = document.WithText(ElementPath(path, array.size()), text);
    }
    return *this;
}

Settings::Edit& Settings::Edit::RemoveElement(std::string_view path, Value const& element) {
    Array const array = fState->ArrayAt(path);
    if (std::ranges::find(array, element) == array.end()) {
        throw Error(Fault::kNoValue, std::string(path) + " does not contain " + element.Text());
    }
    Document document = fState->WithArray(path, array);
    std::vector<std::string> removed = fState->fRemovedElements;
    for (std::size_t i = array.size(); i-- > 0;) {
        if (array[i] == element) {
            removed.push_back(ElementPath(path, i));
            document = document.Without(removed.back());
        }
    }
    fState->fResult = document;
    fState->fRemovedElements = std::move(removed);
    return *this;
}

Settings::Edit& Settings::Edit::RemoveElementText(std::string_view path, std::string_view text) {
    return RemoveElement(path, ParseElement(fState->fSettings->fSchema, path, text));
}

Settings::Edit& Settings::Edit::Copy(Document const& from, std::string_view path) {
    fState->fResult = fState->fResult.WithCopy(path, from);
    return *this;
}

std::size_t Settings::Edit::CopyMatching(Document const& from, std::string_view pattern) {
    if (from.Find(pattern) != nullptr) {
        Copy(from, pattern);
        return 1;
    }
    Schema const& schema = fState->fSettings->fSchema;
    std::string const group = detail::IsPattern(pattern) ? "" : schema.FindGroup(pattern);
    std::size_t count = 0;
    for (auto const& [key, value] : from.Values()) {
        Rule const* const rule = schema.Find(key);
        bool const isOfGroup = !group.empty() && rule != nullptr && rule->Group() == group;
        if (isOfGroup || (detail::IsPattern(pattern) && detail::MatchesPattern(pattern, key))) {
            Copy(from, key);
            ++count;
        }
    }
    return count;
}

Settings::Edit& Settings::Edit::Remove(std::string_view path) {
    Document const result = fState->fResult.Without(path);
    if (fState->fResult.Find(path)->key.Size() == 0) {
        fState->fRemovedElements.emplace_back(path);
    }
    fState->fResult = result;
    return *this;
}

Document const& Settings::Edit::Result() const noexcept {
    return fState->fResult;
}

Findings Settings::Edit::Check() const {
    return AsFindings(fState->Check());
}

Findings Settings::Edit::Warnings() const {
    return AsFindings(fState->Warnings());
}

Findings Settings::Edit::Commit() {
    if (fState->fSettings->fDocument.Text() != fState->fBase.Text()) {
        throw Error(Fault::kConflict, "the settings have changed since this change began");
    }
    auto findings = fState->Check();
    if (findings.empty()) {
        fState->fSettings->fDocument = fState->fResult;
        fState->fBase = fState->fResult;
        fState->fRemovedElements.clear();
    }
    return AsFindings(std::move(findings));
}

struct RawAccess::State {
    detail::Turn fTurn;
    std::list<detail::ComponentSettings> fObjects;
};

RawAccess::RawAccess() : fState(std::make_unique<State>()) {}
RawAccess::~RawAccess() = default;

Component RawAccess::Attach(BIBLookupProc lookup) {
    return Component(detail::RunningComponent::Attach(lookup));
}

BIBLookupProc RawAccess::Lookup() const noexcept {
    return fState->fTurn.Lookup();
}

::PDFSettings* RawAccess::Object(Settings const& settings) {
    return fState->fObjects.emplace_back(fState->fTurn, settings.Text(), settings.Rules().Text())
        .Get();
}

} // namespace pdfsettings
