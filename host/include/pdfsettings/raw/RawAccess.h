// Escape hatch: direct access to the registered tables, for what the API has no words for.
#pragma once

#include "api/BIBBootstrap.h"
#include "api/PDFSettings.h"
#include "pdfsettings/Component.h"
#include "pdfsettings/Export.h"

#include <memory>

namespace pdfsettings {

class Settings;

// The right to call the runtime and the component directly. While it lives, validations and raw
// accesses of other threads wait, so it should be short; the thread that has it may go on using the
// API. A host that starts or stops the
// component itself does so under BIBRuntimeLockCalls, not under this, which needs one that runs.
// The headers in api/ say what each procedure wants and who owns what. It belongs to its thread,
// which destroys it, and before the program ends: the end waits for it.
class PDFSETTINGS_API RawAccess {
public:
    // Waits for other threads. Throws Error as Component::Shared, and with kStopped.
    RawAccess();
    ~RawAccess();
    RawAccess(RawAccess const&) = delete;
    RawAccess& operator=(RawAccess const&) = delete;

    // For a program with a runtime of its own, on which it runs the component: from now on, and as
    // long as a handle lives, this library uses that one, and never stops it. Calls for which
    // docs/hosting.md asks that they be made alone must not be made beside those of this library:
    // they are made under a RawAccess. Reports go where that runtime sends
    // them, so that a failure has no reason here, not even that memory ran out. Throws Error:
    // kInUse when another component is in use here, kStopped when none runs on that runtime.
    static Component Attach(BIBLookupProc lookup);

    // Gives the procedure that is registered under an interface, its own name and the name of its
    // type, or null.
    BIBLookupProc Lookup() const noexcept;

    // A new object of the component with these settings and their schema. It is not counted, and
    // valid as long as this. Throws Error.
    ::PDFSettings* Object(Settings const& settings);

private:
    struct State;

    std::unique_ptr<State> fState;
};

} // namespace pdfsettings
