#include "source/PDFSettingsInterface.h"

#include "source/Boundary.h"
#include "source/PDFSettingsError.h"
#include "source/PDFSettingsFile.h"
#include "source/PDFSettingsStream.h"

using BIB_T_NMT::CBIBPositionableStream;
using BIB_T_NMT::CPOSArray;
using BIB_T_NMT::CPOSDict;
using UnicodeEncodingNS::Unicode16;

namespace PDFSettingsImpl {

namespace {

// The container of a new Object. If the constructor throws, the memory is freed; if there is no
// container to be had, the object stays behind unfreed, for by then a container may have taken it
// over.
template <class Object, class Source>
PDFSettings* NewSettings(Source const& source, char const* schema) {
    return PDFSettingsObject::NewContainer(new Object(source, schema));
}

// The path in a buffer of the host's.
Unicode16 MakePath(BIBSharedBuffer* path) {
    return UnicodeEncodingNS::CreateUnicode16(UnicodeEncodingNS::Buffer16(path, /*adopt=*/false));
}

} // namespace

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

// Settings whose state cannot be told count as changed.
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

} // namespace PDFSettingsImpl
