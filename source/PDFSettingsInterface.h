// The boundary procedures on settings objects: what stands behind the rows of
// PDF_SETTINGS_INTERFACE_ROWS in api/PDFSettings.h, where each is described. None throws.
#pragma once

#include "api/PDFSettings.h"
#include "source/PDFSettingsObject.h"

namespace PDFSettingsImpl {

PDFSettings* _PDFSettingsNewFromStreamProc_NewFromStream(
    BIBPositionableStream* stream, char const* schema) noexcept;

PDFSettings*
_PDFSettingsNewFromDictProc_NewFromDict(POSDict* settings, char const* schema) noexcept;

POSDict* _PDFSettingsGetSettingsProc_GetSettings(PDFSettings* settings) noexcept;

} // namespace PDFSettingsImpl
