// The component on the runtime under test: as it is, with each row missing, and with each row
// failing.
#include "api/PDFSettings.h"
#include "conformance/Group.h"
#include "conformance/Groups.h"
#include "conformance/RowDouble.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace conformance {

namespace {

struct _t_PDFSettingsInterface {
    PDF_SETTINGS_INTERFACE_ROWS(BIB_TABLE_SLOT)
};
struct _t_PDFSettingsStatics {
    PDF_SETTINGS_STATICS_ROWS(BIB_TABLE_SLOT)
};

constexpr char kText[] = "<< /Count 10 /Name /All /Nested << /List [ 1 2 ] /Text (text) >>\n"
                         ">> setalembicorparams\n<< >> setpagedevice\n";
constexpr char kSchema[] = "< PDFSettings < optional < Count < type integer min 1 max 100 > > > >";

// The component, loaded and perhaps started on a lookup. Unloaded in the end.
class Component {
public:
    explicit Component(Runtime const& runtime)
        : fRuntime(runtime),
          fModule(::dlopen(runtime.Component().c_str(), RTLD_NOW | RTLD_LOCAL)) {
        if (!fModule) {
            throw Skipped{std::string("the component cannot be loaded: ") + ::dlerror()};
        }
        fInitialize = Find<int (*)(BIBLookupProc)>("PDFSettingsInitialize");
        fTerminate = Find<void (*)()>("PDFSettingsTerminate");
    }
    Component(Component const&) = delete;
    Component& operator=(Component const&) = delete;
    ~Component() {
        Stop();
        ::dlclose(fModule);
    }

    // Whether it starts.
    bool Start(BIBLookupProc lookup) {
        fHasTried = true;
        return fInitialize(lookup) == 1;
    }
    void Stop() {
        if (fHasTried) {
            fTerminate();
        }
        fHasTried = false;
    }

    // Its tables, as far as they are registered.
    _t_PDFSettingsInterface Settings() const {
        constexpr RowName kRows[] = {PDF_SETTINGS_INTERFACE_ROWS(BIB_TABLE_NAMES)};
        return Table<_t_PDFSettingsInterface>("PDFSettingsInterface", kRows);
    }
    _t_PDFSettingsStatics Statics() const {
        constexpr RowName kRows[] = {PDF_SETTINGS_STATICS_ROWS(BIB_TABLE_NAMES)};
        return Table<_t_PDFSettingsStatics>("PDFSettingsStatics", kRows);
    }

private:
    template <class Proc>
    Proc Find(char const* name) const {
        void* const proc = ::dlsym(fModule, name);
        Require(proc != nullptr, "an export of the component", name);
        return reinterpret_cast<Proc>(proc);
    }

    template <class T, std::size_t kCount>
    T Table(char const* interfaceName, RowName const (&rows)[kCount]) const {
        static_assert(sizeof(T) == kCount * sizeof(void*));
        void* procs[kCount] = {};
        for (std::size_t row = 0; row < kCount; ++row) {
            procs[row] = fRuntime.Lookup()(interfaceName, rows[row].fName, rows[row].fProcType);
        }
        T table;
        std::memcpy(&table, procs, sizeof(table));
        return table;
    }

    Runtime const& fRuntime;
    void* fModule;
    int (*fInitialize)(BIBLookupProc) = nullptr;
    void (*fTerminate)() = nullptr;
    bool fHasTried = false;
};

// Adds the reference of the caller to what a row returned; nothing for null.
template <class T>
class Kept {
public:
    Kept(Runtime const& runtime, T* object) : fRows(runtime.Containers()), fObject(object) {
        if (object && fRows.AddRef(As<BIBContainer>(object)) == 0) {
            fRows.DeleteUnownedContainer(As<BIBContainer>(object));
            fObject = nullptr;
        }
    }
    Kept(Kept const&) = delete;
    Kept& operator=(Kept const&) = delete;
    ~Kept() {
        if (fObject) {
            fRows.Release(As<BIBContainer>(fObject));
        }
    }
    T* Get() const noexcept { return fObject; }

private:
    _t_BIBContainerInterface fRows;
    T* fObject;
};

BIBPositionableStream* StreamOn(Runtime const& runtime, std::string const& text) {
    auto const buffers = runtime.Buffers();
    BIBSharedBuffer* const buffer =
        buffers.NewBuffer(text.size(), nullptr, nullptr, nullptr, nullptr);
    Require(buffer != nullptr, "a buffer", "null");
    std::memcpy(buffers.GetBuffer(buffer), text.data(), text.size());
    BIBPositionableStream* stream = nullptr;
    BIBError* const error = runtime.Streams().NewPositionableBufferStream(&stream, buffer);
    buffers.Release(buffer);
    runtime.Succeed("NewPositionableBufferStream", error);
    return stream;
}

std::string TextOf(Runtime const& runtime, BIBPositionableStream* stream) {
    auto const rows = runtime.Methods<_t_BIBSimpleStreamInterface>(stream);
    std::string text;
    unsigned char part[100];
    unsigned long size = sizeof part;
    while (size == sizeof part) {
        runtime.Succeed("Read", rows.Read(As<BIBSimpleStream>(stream), &size, part, sizeof part));
        text.append(reinterpret_cast<char*>(part), size);
    }
    return text;
}

// The path as the component takes it: UTF-16 in the machine's byte order. Released in the end.
class PathBuffer {
public:
    PathBuffer(Runtime const& runtime, std::string const& path)
        : fRows(runtime.Buffers()),
          fBuffer(
              fRows.NewBuffer(path.size() * sizeof(char16_t), nullptr, nullptr, nullptr, nullptr)) {
        Require(fBuffer != nullptr, "a buffer", "null");
        std::u16string const units(path.begin(), path.end());
        std::memcpy(fRows.GetBuffer(fBuffer), units.data(), units.size() * sizeof(char16_t));
    }
    PathBuffer(PathBuffer const&) = delete;
    PathBuffer& operator=(PathBuffer const&) = delete;
    ~PathBuffer() { fRows.Release(fBuffer); }
    operator BIBSharedBuffer*() const noexcept { return fBuffer; }

private:
    _t_BIBSharedBuffInterface fRows;
    BIBSharedBuffer* fBuffer;
};

// A folder of its own, in which the component finds the user's folders.
class Folder {
public:
    Folder() {
        Require(::mkdtemp(fPath) != nullptr, "a temporary folder", "none");
        for (char const* const name : kVariables) {
            char const* const value = std::getenv(name);
            fOld.emplace_back(value ? std::optional<std::string>(value) : std::nullopt);
            ::setenv(name, fPath, 1);
        }
    }
    Folder(Folder const&) = delete;
    Folder& operator=(Folder const&) = delete;
    ~Folder() {
        for (std::size_t i = 0; i < fOld.size(); ++i) {
            fOld[i] ? ::setenv(kVariables[i], fOld[i]->c_str(), 1) : ::unsetenv(kVariables[i]);
        }
        std::error_code ignored;
        std::filesystem::remove_all(fPath, ignored);
    }
    std::string File(char const* name) const { return std::string(fPath) + "/" + name; }

private:
    static constexpr char const* kVariables[] = {"XDG_DATA_HOME", "XDG_CONFIG_HOME"};

    char fPath[32] = "/tmp/bib-conformance-XXXXXX";
    std::vector<std::optional<std::string>> fOld;
};

void WriteFile(std::string const& path, std::string const& text) {
    std::ofstream(path, std::ios::binary) << text;
}

std::string ReadFile(std::string const& path) {
    std::ifstream stream(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

// The component, started, and settings made of kText.
struct Session {
    explicit Session(Runtime const& runtime) : fComponent(runtime) {
        Require(fComponent.Start(runtime.Lookup()), "1 of PDFSettingsInitialize", "0");
        fRows = fComponent.Settings();
        Require(
            fRows.NewFromStream != nullptr,
            "a table that is found through the lookup after the start",
            "NewFromStream is missing");
    }

    PDFSettings* Read(Runtime const& runtime, char const* text) const {
        auto const stream = runtime.Hold(StreamOn(runtime, text));
        return fRows.NewFromStream(stream, kSchema);
    }

    Component fComponent;
    _t_PDFSettingsInterface fRows;
};

void StartsAndStops(Runtime const& runtime) {
    Component component(runtime);
    for (int round = 0; round < 2; ++round) {
        Require(component.Start(runtime.Lookup()), "1 of PDFSettingsInitialize", "0");
        Require(!component.Start(runtime.Lookup()), "0 of a second start", "1");
        Require(component.Settings().Write != nullptr, "the component's rows", "none");
        component.Stop();
        Require(component.Settings().Write == nullptr, "no rows after the stop", "some");
    }
}

void ReadsSettings(Runtime const& runtime) {
    Session const session(runtime);
    auto const settings = runtime.Hold(session.Read(runtime, kText));
    POSDict* const dict = session.fRows.GetSettings(settings);
    Require(dict != nullptr, "the dictionary of the settings", "null");
    Require(
        runtime.NumberOf(runtime.Get(dict, "Count")) == 10.0, "10 under Count", "another value");
    auto const dicts = runtime.Dicts();
    Require(
        runtime.NumberOf(dicts.DeepGet(dict, Atom(runtime, "Nested/List/1"))) == 2.0,
        "2 at Nested/List/1",
        "another value");
    auto const binData = runtime.Rows<_t_POSBinDataInterface>();
    POSObject* const text = dicts.DeepGet(dict, Atom(runtime, "Nested/Text"));
    Require(text && binData.IsPOSBinData(text) != 0, "binary data for a string", "another value");
    Expect(
        "the type of a string",
        std::string("JoboptionsString"),
        binData.GetTypeName(As<POSBinData>(text)));
    Expect("a text that is no settings file", nullptr, session.Read(runtime, "no settings"));
}

void WritesSettings(Runtime const& runtime) {
    Session const session(runtime);
    auto const settings = runtime.Hold(session.Read(runtime, kText));
    auto const stream = runtime.Hold(session.fRows.GetJobOptionsData(settings));
    std::string const text = TextOf(runtime, stream);
    auto const again = runtime.Hold(session.Read(runtime, text.c_str()));
    auto* const dict = As<POSObject>(session.fRows.GetSettings(settings));
    auto const methods = runtime.Methods<_t_POSObjectVirtualInterface>(dict);
    Require(
        methods.IsEqual(dict, As<POSObject>(session.fRows.GetSettings(again))) != 0,
        "the same settings from what was written",
        text);
}

void ChangesSettings(Runtime const& runtime) {
    Session const session(runtime);
    auto const arrays = runtime.Arrays();
    auto const settings = runtime.Hold(session.Read(runtime, kText));
    auto const change = [&](char const* text) {
        auto const changes = runtime.Hold(As<POSDict>(runtime.Parse(text)));
        return session.fRows.SetSettings(settings, changes);
    };
    auto const count = [&] {
        return runtime.NumberOf(runtime.Get(session.fRows.GetSettings(settings), "Count"));
    };
    auto const accepted = runtime.Hold(change("< Count 20 >"));
    Expect("errors of an accepted change", 0UL, arrays.Count(accepted));
    Require(count() == 20.0, "the new value", "another one");
    auto const rejected = runtime.Hold(change("< Count twenty >"));
    Expect("errors of a rejected change", 1UL, arrays.Count(rejected));
    Require(count() == 20.0, "the value before a rejected change", "another one");
    auto* const error = As<POSDict>(arrays.GetAt(rejected, 0));
    auto* const key = As<POSString>(runtime.Get(error, "Key"));
    Require(key != nullptr, "an error with a Key", "none");
    Expect("its Key", std::string("Count"), runtime.Strings().Get(key));
    auto const valid = runtime.Hold(session.fRows.IsPDFSettingsValid(settings));
    Expect("errors of valid settings", 0UL, arrays.Count(valid));
}

void WorksOnFilesOfSettings(Runtime const& runtime) {
    Folder const folder;
    Session const session(runtime);
    std::string const path = folder.File("a.joboptions");
    WriteFile(path, kText);
    PathBuffer const buffer(runtime, path);
    auto const settings = runtime.Hold(session.fRows.NewFromFile(buffer, kSchema));
    Expect("IsDirty of a file that was just read", 0, session.fRows.IsDirty(settings));
    std::filesystem::last_write_time(
        path, std::filesystem::last_write_time(path) - std::chrono::hours(1));
    Expect("IsDirty of a file that another program changed", 1, session.fRows.IsDirty(settings));
    runtime.Succeed("Write", session.fRows.Write(settings, buffer));
    Expect("IsDirty after Write", 0, session.fRows.IsDirty(settings));
    Require(
        ReadFile(path).find("/Count 10\r\n") != std::string::npos,
        "the settings in the file",
        ReadFile(path));
}

void ListsSettings(Runtime const& runtime) {
    Folder const folder;
    Session const session(runtime);
    auto const statics = session.fComponent.Statics();
    auto const list = runtime.Hold(statics.GetListofPDFSettings(""));
    Require(runtime.Arrays().IsPOSArray(list.Value()) != 0, "an array", "another value");
    BIBSharedBuffer* const path = statics.GetDefaultPDFSettingsDirectory();
    Require(path != nullptr, "the user's folder", "null");
    runtime.Buffers().Release(path);
}

void ReleasesWhatItTook(Runtime const& runtime) {
    Session const session(runtime);
    auto const stream = runtime.Hold(StreamOn(runtime, kText));
    auto const dict = runtime.Hold(As<POSDict>(runtime.Parse("< Count 1 >")));
    {
        auto const settings = runtime.Hold(session.fRows.NewFromStream(stream, kSchema));
        auto const other = runtime.Hold(session.fRows.NewFromDict(dict, kSchema));
        auto const data = runtime.Hold(session.fRows.GetJobOptionsData(other));
    }
    Expect("the references on the stream", 1L, runtime.CountOf(stream.Container()));
    Expect("the references on the dictionary", 1L, runtime.CountOf(dict.Container()));
}

constexpr Check kComponentChecks[] = {
    {"component.start",
     "The component starts once, registers its rows, unregisters them when it stops, and starts "
     "again.",
     &StartsAndStops},
    {"component.read",
     "Settings are read into a dictionary of the runtime's values.",
     &ReadsSettings},
    {"component.write", "What is written reads back as the same settings.", &WritesSettings},
    {"component.change",
     "A change is accepted, or rejected with errors and without effect.",
     &ChangesSettings},
    {"component.file",
     "Settings are read from a file, know when it changes, and are written to it.",
     &WorksOnFilesOfSettings},
    {"component.list", "The folder and the list are found.", &ListsSettings},
    {"component.references",
     "Settings release the stream or dictionary that they were made of.",
     &ReleasesWhatItTook},
};

// With rows that are missing or fail.

// Uses the component in every way, with all results allowed that its rows state: an object or null,
// one or zero.
void UseAll(Runtime const& runtime, Component& component, std::string const& path) {
    if (!component.Start(&RowDouble::Lookup)) {
        return;
    }
    auto const rows = component.Settings();
    auto const statics = component.Statics();
    auto const stream = runtime.Hold(StreamOn(runtime, kText));
    auto const changes = runtime.Hold(As<POSDict>(runtime.Parse("< Count 200 Name (x) >")));
    PathBuffer const buffer(runtime, path);
    WriteFile(path, kText);
    {
        Kept const fromFile(runtime, rows.NewFromFile(buffer, kSchema));
        Kept const settings(runtime, rows.NewFromStream(stream, kSchema));
        if (settings.Get()) {
            rows.GetSettings(settings.Get());
            Kept const rejected(runtime, rows.SetSettings(settings.Get(), changes));
            Kept const errors(runtime, rows.IsPDFSettingsValid(settings.Get()));
            Kept const text(runtime, rows.GetJobOptionsData(settings.Get()));
            runtime.TakeMessage(rows.Write(settings.Get(), buffer));
            int const isDirty = rows.IsDirty(settings.Get());
            Require(isDirty == 0 || isDirty == 1, "0 or 1 of IsDirty", std::to_string(isDirty));
        }
    }
    Kept const list(runtime, statics.GetListofPDFSettings("Application"));
    runtime.Buffers().Release(statics.GetDefaultPDFSettingsDirectory());
}

// A component that has seen failures must work once there are none.
void RequireRecovery(Runtime const& runtime, std::string const& row) {
    try {
        ChangesSettings(runtime);
    } catch (Failure const& failure) {
        throw Failure{
            "the component works again: " + failure.fExpected, row + ": " + failure.fFound};
    }
}

void LivesWithoutRows(Runtime const& runtime) {
    Folder const folder;
    RowDouble rows(runtime);
    for (NamedRow const& row : RowsOfTheComponent()) {
        rows.Hide(row);
        {
            Component component(runtime);
            UseAll(runtime, component, folder.File("a.joboptions"));
        }
        rows.Restore();
        RequireRecovery(runtime, row.fInterface + "." + row.fName);
    }
}

// Whether the n-th call of row was made, and failed. False for a row that cannot fail.
bool FailOneCall(
    Runtime const& runtime,
    RowDouble& rows,
    NamedRow const& row,
    unsigned long n,
    bool andAllLater) {
    if (!rows.FailCall(row, n, andAllLater)) {
        return false;
    }
    Folder const folder;
    Component component(runtime);
    UseAll(runtime, component, folder.File("a.joboptions"));
    return RowDouble::CountCalls() >= n;
}

void LivesWithFailures(Runtime const& runtime, bool andAllLater) {
    constexpr unsigned long kMostCalls = 200;
    RowDouble rows(runtime);
    for (NamedRow const& row : RowsOfTheComponent()) {
        unsigned long n = 1;
        while (n <= kMostCalls && FailOneCall(runtime, rows, row, n, andAllLater)) {
            ++n;
        }
        rows.Restore();
        RequireRecovery(runtime, row.fInterface + "." + row.fName);
    }
}

constexpr Check kMissingChecks[] = {
    {"rows.missing",
     "Where a row is missing, the component does not start or a call gives its failure value; "
     "with the row it works again.",
     &LivesWithoutRows},
};

constexpr Check kFailingChecks[] = {
    {"sweep.once",
     "A runtime may fail at any call: with the n-th call of a row failing, each procedure gives a "
     "result or its failure value, and the component works again.",
     [](Runtime const& runtime) { LivesWithFailures(runtime, /*andAllLater=*/false); }},
    {"sweep.from-then-on",
     "The same with all later calls of the row failing.",
     [](Runtime const& runtime) { LivesWithFailures(runtime, /*andAllLater=*/true); }},
};

} // namespace

constinit Group const kComponent = {
    "component", "PDFSettingsInterface PDFSettingsStatics", Demand::kComponent, kComponentChecks};
constinit Group const kMissingRows = {"rows", "", Demand::kComponent, kMissingChecks};
constinit Group const kFailingRows = {"sweep", "", Demand::kSweep, kFailingChecks};

} // namespace conformance
