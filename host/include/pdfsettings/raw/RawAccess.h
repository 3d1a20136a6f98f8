// Escape hatch: direct access to the registered tables, for what the API does not cover.
#pragma once

#include "api/BIBBootstrap.h"
#include "api/PDFSettings.h"
#include "pdfsettings/Component.h"
#include "pdfsettings/Export.h"

#include <memory>

namespace pdfsettings {

class Settings;

// The right to call the runtime and the component directly. Keep it only briefly: while it exists,
// validations and raw accesses of other threads wait. The owning thread may go on using the API. A
// host that starts or stops the component itself does so under BIBRuntimeLockCalls, not under a
// RawAccess, which requires a running component. The headers in api/ state the arguments and the
// ownership for each procedure. A RawAccess belongs to its thread, which must destroy it before the
// program ends: the end of the program waits for it.
class PDFSETTINGS_API RawAccess {
public:
    // Waits for other threads. Throws Error as Component::Shared, and with kStopped.
    RawAccess();
    ~RawAccess();
    RawAccess(RawAccess const&) = delete;
    RawAccess& operator=(RawAccess const&) = delete;

    // For a program that runs the component on a runtime of its own: from now on, and as long as a
    // handle exists, this library uses that component, and never stops it. Make the calls that
    // docs/hosting.md requires to be made alone under a RawAccess, not concurrently with calls of
    // this library. Reports go where that runtime sends them, so errors have no reason here, and
    // running out of memory is not distinguished. Throws Error: kInUse if another component is in
    // use here, kStopped if none runs on that runtime.
    static Component Attach(BIBLookupProc lookup);

    // The procedure that looks up procedures by an interface, their own name and the name of their
    // type; it returns null if there is none.
    BIBLookupProc Lookup() const noexcept;

    // A new object of the component with these settings and their schema, borrowed from this
    // RawAccess. Throws Error.
    ::PDFSettings* Object(Settings const& settings);

private:
    struct PDFSETTINGS_LOCAL State;

    std::unique_ptr<State> fState;
};

} // namespace pdfsettings
