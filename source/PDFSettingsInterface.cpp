#include "source/PDFSettingsInterface.h"

#include "source/Boundary.h"
#include "source/PDFSettingsStream.h"

using BIB_T_NMT::CBIBPositionableStream;
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

POSDict* _PDFSettingsGetSettingsProc_GetSettings(PDFSettings* settings) noexcept {
    return AtBoundary(kNullOnFailure, [=]() -> POSDict* {
        CPOSDict dict = PDFSettingsObject::GetInstance(settings)->GetSettings();
        return reinterpret_cast<POSDict*>(dict.UnownedReturn());
    });
}

} // namespace PDFSettingsImpl
