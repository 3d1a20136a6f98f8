// The tables of procedures by which a host reaches the component.
#pragma once

namespace PDFSettingsImpl {

// Registers "PDFSettingsStatics" and then "PDFSettingsInterface". False when a row is refused; what
// was registered before stays so. REQUIRES: the client layer is bound, here and below.
bool RegisterPDFSettingsImpl();
bool RegisterPDFSettingsStaticsProcs();
bool RegisterPDFSettingsInterfaceProcs();

// Unregisters both, and then "PDFSettingsVirtualInterface".
void UnregisterPDFSettingsImpl();

} // namespace PDFSettingsImpl
