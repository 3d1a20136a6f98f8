// The boundary procedures on settings objects: what stands behind the rows of
// PDF_SETTINGS_INTERFACE_ROWS in api/PDFSettings.h, where each is described. None throws.
#pragma once

#include "api/PDFSettings.h"
#include "source/PDFSettingsObject.h"

namespace PDFSettingsImpl {

PDFSettings* _PDFSettingsNewFromStreamProc_NewFromStream(
    BIBPositionableStream* stream, char const* schema) noexcept;

PDFSettings*
_PDFSettingsNewFromFileProc_NewFromFile(BIBSharedBuffer* path, char const* schema) noexcept;

PDFSettings*
_PDFSettingsNewFromDictProc_NewFromDict(POSDict* settings, char const* schema) noexcept;

BIBPositionableStream*
_PDFSettingsGetJobOptionsDataProc_GetJobOptionsData(PDFSettings* settings) noexcept;

POSDict* _PDFSettingsGetSettingsProc_GetSettings(PDFSettings* settings) noexcept;

POSArray* _PDFSettingsSetSettingsProc_SetSettings(PDFSettings* settings, POSDict* changes) noexcept;

POSArray* _PDFSettingsIsPDFSettingsValidProc_IsPDFSettingsValid(PDFSettings* settings) noexcept;

int _PDFSettingsIsDirtyProc_IsDirty(PDFSettings* settings) noexcept;

BIBError* _PDFSettingsWriteProc_Write(PDFSettings* settings, BIBSharedBuffer* path) noexcept;

} // namespace PDFSettingsImpl
