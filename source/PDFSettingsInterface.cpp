#include "source/PDFSettingsInterface.h"

#include "source/Boundary.h"
#include "source/PDFSettingsStream.h"

using BIB_T_NMT::CBIBPositionableStream;
using BIB_T_NMT::CPOSArray;
using BIB_T_NMT::CPOSDict;

namespace PDFSettingsImpl {

namespace {

// The container of a new Object. If the constructor throws, the memory is freed; if there is no
// container to be had, the object stays behind unfreed, for by then a container may have taken it
// over.
template <class Object, class Source>
PDFSettings* NewSettings(Source const& source, char const* schema) {
    return PDFSettingsObject::NewContainer(new Object(source, schema));
}

} // namespace

PDFSettings* _PDFSettingsNewFromStreamProc_NewFromStream(
    BIBPositionableStream* stream, char const* schema) noexcept {
    return AtBoundary(kNullOnFailure, [=]() -> PDFSettings* {
        return NewSettings<PDFSettingsStream>(CBIBPositionableStream(stream), schema);
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

} // namespace PDFSettingsImpl
