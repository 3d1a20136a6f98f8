// The boundary procedures: the implementations of the rows of PDF_SETTINGS_INTERFACE_ROWS and
// PDF_SETTINGS_STATICS_ROWS, which api/PDFSettings.h describes; the tables in which they are
// registered; and the static operations of PDFSettingsObject.
#include "source/Boundary.h"

#include "api/PDFSettings.h"
#include "bib/BIBInterfaceClient.h"
#include "source/FileMgmt.h"
#include "source/PDFSettingsError.h"
#include "source/PDFSettingsObject.h"

#include <iterator>
#include <memory>

using BIB_T_NMT::_t_BIBFTabRegEntry;
using BIB_T_NMT::CBIBPositionableStream;
using BIB_T_NMT::CPOSArray;
using BIB_T_NMT::CPOSDict;
using UnicodeEncodingNS::Unicode16;

namespace PDFSettingsImpl {

namespace {

// The container of a new Object. If the constructor throws, the memory is freed. If no container
// can be made, the object is not freed, because a container may already own it.
template <class Object, class Source>
PDFSettings* NewSettings(Source const& source, char const* schema) {
    return PDFSettingsObject::NewContainer(new Object(source, schema));
}

// The path in a buffer of the host.
Unicode16 MakePath(BIBSharedBuffer* path) {
    return UnicodeEncodingNS::CreateUnicode16(UnicodeEncodingNS::Buffer16(path, /*adopt=*/false));
}

PDFSettings* _PDFSettingsNewFromStreamProc_NewFromStream(
    BIBPositionableStream* stream, char const* schema) noexcept {
    return AtBoundary(kNullOnFailure, [=]() -> PDFSettings* {
        return NewSettings<PDFSettingsStream>(CBIBPositionableStream(stream), schema);
    });
}

PDFSettings*
_PDFSettingsNewFromFileProc_NewFromFile(BIBSharedBuffer* path, char const* schema) noexcept {
    return AtBoundary(kNullOnFailure, [=]() -> PDFSettings* {
        return NewSettings<PDFSettingsFile>(MakePath(path), schema);
    });
}

PDFSettings*
_PDFSettingsNewFromDictProc_NewFromDict(POSDict* settings, char const* schema) noexcept {
    return AtBoundary(kNullOnFailure, [=]() -> PDFSettings* {
        return NewSettings<PDFSettingsObject>(CPOSDict(settings), schema);
    });
}

BIBPositionableStream*
_PDFSettingsGetJobOptionsDataProc_GetJobOptionsData(PDFSettings* settings) noexcept {
    return AtBoundary(kNullOnFailure, [=]() -> BIBPositionableStream* {
        return PDFSettingsObject::GetInstance(settings)->GetJobOptionsData().UnownedReturn();
    });
}

POSDict* _PDFSettingsGetSettingsProc_GetSettings(PDFSettings* settings) noexcept {
    return AtBoundary(kNullOnFailure, [=]() -> POSDict* {
        CPOSDict dict = PDFSettingsObject::GetInstance(settings)->GetSettings();
        return reinterpret_cast<POSDict*>(dict.UnownedReturn());
    });
}

POSArray*
_PDFSettingsSetSettingsProc_SetSettings(PDFSettings* settings, POSDict* changes) noexcept {
    return AtBoundary(kNullOnFailure, [=]() -> POSArray* {
        CPOSDict const dict(changes);
        CPOSArray errors = PDFSettingsObject::GetInstance(settings)->SetSettings(dict);
        return reinterpret_cast<POSArray*>(errors.UnownedReturn());
    });
}

POSArray* _PDFSettingsIsPDFSettingsValidProc_IsPDFSettingsValid(PDFSettings* settings) noexcept {
    return AtBoundary(kNullOnFailure, [=]() -> POSArray* {
        CPOSArray errors = PDFSettingsObject::GetInstance(settings)->IsPDFSettingsValid();
        return reinterpret_cast<POSArray*>(errors.UnownedReturn());
    });
}

// Settings whose state cannot be determined count as changed.
int _PDFSettingsIsDirtyProc_IsDirty(PDFSettings* settings) noexcept {
    auto const assumeDirty = [] { return 1; };
    return AtBoundary(assumeDirty, [=]() -> int {
        return PDFSettingsObject::GetInstance(settings)->IsDirty() ? 1 : 0;
    });
}

BIBError* _PDFSettingsWriteProc_Write(PDFSettings* settings, BIBSharedBuffer* path) noexcept {
    auto const makeError = []() -> BIBError* {
        return NeverEmpty(CPDFSettingsError("Write Failed", kInternalError));
    };
    return AtBoundary(makeError, [=]() -> BIBError* {
        return PDFSettingsObject::GetInstance(settings)->Write(MakePath(path));
    });
}

BIBSharedBuffer*
_PDFSettingsGetDefaultPDFSettingsDirectoryProc_GetDefaultPDFSettingsDirectory() noexcept {
    return AtBoundary(kNullOnFailure, []() -> BIBSharedBuffer* {
        return PDFSettingsObject::GetDefaultPDFSettingsDirectory()
            .GetString(UnicodeEncodingNS::kByteOrderBigEndian, /*terminate=*/true, /*mark=*/true)
            .GetSharedBuffer();
    });
}

POSArray* _PDFSettingsGetListofPDFSettingsProc_GetListofPDFSettings(char const* appName) noexcept {
    return AtBoundary(kNullOnFailure, [=]() -> POSArray* {
        CPOSArray list = PDFSettingsObject::GetListofPDFSettings(appName);
        return reinterpret_cast<POSArray*>(list.UnownedReturn());
    });
}

} // namespace

UnicodeEncodingNS::Unicode16 PDFSettingsObject::GetDefaultPDFSettingsDirectory() {
    std::unique_ptr<SettingsDataStore> const store(SettingsDataStore::Create());
    ThrowIfFalse(
        store != nullptr,
        "PDFSettingsObject::GetDefaultPDFSettingsDirectory: Failed to get data store");
    return store->GetUserSettingsDirectory();
}

BIB_T_NMT::CPOSArray PDFSettingsObject::GetListofPDFSettings(char const* appName) {
    constexpr unsigned long kOwnItemsOnly = 1;
    std::unique_ptr<SettingsDataStore> const store(SettingsDataStore::Create());
    ThrowIfFalse(
        store != nullptr, "PDFSettingsObject::GetListofPDFSettings: Failed to get data store");
    FileMgmt const files(store.get());
    return files.GetFilesInWorkingDirectory(kOwnItemsOnly, appName);
}

namespace {

constexpr char kStaticsName[] = "PDFSettingsStatics";
constexpr char kVirtualInterfaceName[] = "PDFSettingsVirtualInterface";

template <unsigned long Size>
bool Register(_t_BIBFTabRegEntry const (&rows)[Size], char const* interfaceName) {
    // The last row is not registered.
    return BIB_T_NMT::BIBRegisterProcTable(rows, Size - 1, interfaceName) != 0;
}

} // namespace

// A table row: the address of a boundary procedure, checked against its proc type.
#define BIB_TABLE_PROC(operation, procType) \
    {#operation, \
     #procType, \
     reinterpret_cast<void*>(static_cast<procType>(&_##procType##_##operation))},

bool RegisterPDFSettingsStaticsProcs() {
    static _t_BIBFTabRegEntry const kRows[] = {
        PDF_SETTINGS_STATICS_ROWS(BIB_TABLE_PROC){"", "", nullptr}};
    static_assert(std::size(kRows) == 2 + 1);
    return Register(kRows, kStaticsName);
}

bool RegisterPDFSettingsInterfaceProcs() {
    static _t_BIBFTabRegEntry const kRows[] = {
        PDF_SETTINGS_INTERFACE_ROWS(BIB_TABLE_PROC){"", "", nullptr}};
    static_assert(std::size(kRows) == 9 + 1);
    return Register(kRows, PDFSettingsObject::GetInterfaceName());
}

bool RegisterPDFSettingsImpl() {
    return RegisterPDFSettingsStaticsProcs() && RegisterPDFSettingsInterfaceProcs();
}

void UnregisterPDFSettingsImpl() {
    BIB_T_NMT::BIBUnregisterInterface(kStaticsName);
    BIB_T_NMT::BIBUnregisterInterface(PDFSettingsObject::GetInterfaceName());
    BIB_T_NMT::BIBUnregisterInterface(kVirtualInterfaceName);
}

} // namespace PDFSettingsImpl
