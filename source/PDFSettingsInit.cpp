// The exported functions: version, start and stop.

#include "api/PDFSettings.h"

#include "bib/BIBClient.h"
#include "source/Boundary.h"

namespace {

constexpr long kVersion = 0x10400;

// Whether a start was attempted and no stop has run since; whether the start succeeded does not
// matter.
bool gInitialized = false;

bool Start(BIBLookupProc lookup) noexcept {
    try {
        return BIB_T_NMT::BIBClientInit(lookup) && PDFSettingsImpl::RegisterPDFSettingsImpl();
    } catch (...) {
        return false;
    }
}

void Stop() noexcept {
    try {
        PDFSettingsImpl::UnregisterPDFSettingsImpl();
        BIB_T_NMT::BIBClientTerminate();
    } catch (...) {
        // A stop has no result to report a failure with.
    }
}

} // namespace

long PDFSettingsGetVersion() {
    return kVersion;
}

int PDFSettingsInitialize(BIBLookupProc lookup) {
    if (gInitialized) {
        return 0;
    }
    gInitialized = true;
    return Start(lookup) ? 1 : 0;
}

void PDFSettingsTerminate() {
    if (gInitialized) {
        gInitialized = false;
        Stop();
    }
}
