// The line that no exception crosses.
#pragma once

#include "bib/BIBClient.h"
#include "bib/BIBError.h"

namespace PDFSettingsImpl {

// Tells the host of an error.
inline void ReportError(BIB_T_NMT::CBIBError const& error) {
    try {
        BIB_T_NMT::BIBReportError(error.what());
    } catch (...) {
        // what() makes an atom of this text for an invalid error, and there was no memory for it.
        BIB_T_NMT::BIBReportError("Invalid CBIBError");
    }
}

// Gives the result of work. If it throws, reports the reason to the host and gives the result of
// makeFailure, which is called only then.
template <class MakeFailure, class Work>
auto AtBoundary(MakeFailure makeFailure, Work work) noexcept -> decltype(work()) {
    try {
        return work();
    } catch (BIB_T_NMT::CBIBError const& error) {
        ReportError(error);
    } catch (...) {
        BIB_T_NMT::BIBReportError("unknown BIB error");
    }
    return makeFailure();
}

// The failure value of a procedure whose result is a pointer.
inline constexpr auto kNullOnFailure = [] { return nullptr; };

} // namespace PDFSettingsImpl
