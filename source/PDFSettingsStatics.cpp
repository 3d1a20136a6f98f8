#include "source/PDFSettingsStatics.h"

#include "source/Boundary.h"
#include "source/PDFSettingsObject.h"

using BIB_T_NMT::CPOSArray;

namespace PDFSettingsImpl {

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

} // namespace PDFSettingsImpl
