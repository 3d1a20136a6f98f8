// The boundary procedures that need no settings object: what stands behind the rows of
// PDF_SETTINGS_STATICS_ROWS in api/PDFSettings.h, where each is described. None throws.
#pragma once

#include "api/PDFSettings.h"

namespace PDFSettingsImpl {

BIBSharedBuffer*
_PDFSettingsGetDefaultPDFSettingsDirectoryProc_GetDefaultPDFSettingsDirectory() noexcept;

POSArray* _PDFSettingsGetListofPDFSettingsProc_GetListofPDFSettings(char const* appName) noexcept;

} // namespace PDFSettingsImpl
