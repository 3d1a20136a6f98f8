// The boundary to the host: the tables that the component registers, and the trap that stops
// exceptions.
#pragma once

#include "bib/BIBClient.h"
#include "bib/BIBError.h"

namespace PDFSettingsImpl {

// Registers "PDFSettingsStatics", then "PDFSettingsInterface". Returns false if the runtime rejects
// a row; earlier rows stay registered. REQUIRES, here and below: the client layer is bound.
bool RegisterPDFSettingsImpl();
bool RegisterPDFSettingsStaticsProcs();
bool RegisterPDFSettingsInterfaceProcs();

// Unregisters both, then "PDFSettingsVirtualInterface".
void UnregisterPDFSettingsImpl();

// Reports message to the host. Exceptions of the host's own procedure are dropped: there is no
// other receiver to report to.
inline void Report(char const* message) noexcept {
    try {
        BIB_T_NMT::BIBReportError(message);
    } catch (...) {
    }
}

// The text of an error, as returned by CBIBError::what.
inline char const* TextOf(BIB_T_NMT::CBIBError const& error) noexcept {
    try {
        return error.what();
    } catch (...) {
        // what() makes an atom of this text for an invalid error, and memory ran out.
        return "Invalid CBIBError";
    }
}

// Returns the result of work. If work throws, reports the reason to the host and returns the result
// of makeFailure, which is called only then and does not throw.
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
