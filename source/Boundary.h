// The boundary to the host: the tables that the component registers, and the line that no exception
// crosses.
#pragma once

#include "bib/BIBClient.h"
#include "bib/BIBError.h"

namespace PDFSettingsImpl {

// Registers "PDFSettingsStatics" and then "PDFSettingsInterface". False when a row is refused; what
// was registered before stays so. REQUIRES: the client layer is bound, here and below.
bool RegisterPDFSettingsImpl();
bool RegisterPDFSettingsStaticsProcs();
bool RegisterPDFSettingsInterfaceProcs();

// Unregisters both, and then "PDFSettingsVirtualInterface".
void UnregisterPDFSettingsImpl();

// Reports message to the host. What the host's own procedure throws ends here: there is nobody else
// to report to.
inline void Report(char const* message) noexcept {
    try {
        BIB_T_NMT::BIBReportError(message);
    } catch (...) {
    }
}

// The text of an error, as CBIBError::what gives it.
inline char const* TextOf(BIB_T_NMT::CBIBError const& error) noexcept {
    try {
        return error.what();
    } catch (...) {
        // what() makes an atom of this text for an invalid error, and there was no memory for it.
        return "Invalid CBIBError";
    }
}

// Gives the result of work. If it throws, reports the reason to the host and gives the result of
// makeFailure, which is called only then and does not throw.
template <class MakeFailure, class Work>
auto AtBoundary(MakeFailure makeFailure, Work work) noexcept -> decltype(work()) {
    try {
        return work();
    } catch (BIB_T_NMT::CBIBError const& error) {
        Report(TextOf(error));
    } catch (...) {
        Report("unknown BIB error");
    }
    return makeFailure();
}

// The failure value of a procedure whose result is a pointer.
inline constexpr auto kNullOnFailure = [] { return nullptr; };

} // namespace PDFSettingsImpl
