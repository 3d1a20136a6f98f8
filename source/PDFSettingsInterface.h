// The boundary procedures: what stands behind PDF_SETTINGS_INTERFACE_ROWS and
// PDF_SETTINGS_STATICS_ROWS in api/PDFSettings.h, where each is described; and the tables that they
// are registered in.
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

BIBSharedBuffer*
_PDFSettingsGetDefaultPDFSettingsDirectoryProc_GetDefaultPDFSettingsDirectory() noexcept;

POSArray* _PDFSettingsGetListofPDFSettingsProc_GetListofPDFSettings(char const* appName) noexcept;

// Registers "PDFSettingsStatics" and then "PDFSettingsInterface". False when a row is refused; what
// was registered before stays so. REQUIRES: the client layer is bound, here and below.
bool RegisterPDFSettingsImpl();
bool RegisterPDFSettingsStaticsProcs();
bool RegisterPDFSettingsInterfaceProcs();

// Unregisters both, and then "PDFSettingsVirtualInterface".
void UnregisterPDFSettingsImpl();

} // namespace PDFSettingsImpl
