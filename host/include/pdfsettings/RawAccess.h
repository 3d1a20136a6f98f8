// The way down to the registered tables, for what the API has no words for.
#pragma once

#include "api/BIBBootstrap.h"
#include "api/PDFSettings.h"
#include "pdfsettings/Export.h"

#include <memory>

namespace pdfsettings {

class Component;
class Settings;

namespace detail {
class RunningComponent;
class Turn;
} // namespace detail

// The right to call the runtime and the component directly. While it lives, calls of the API by
// other threads wait, so it should be short; the thread that has it may go on using the API. The
// headers in api/ say what each procedure wants and who owns what. It belongs to its thread, which
// destroys it, and before the program ends: the end waits for it.
class PDFSETTINGS_API RawAccess {
public:
    // Waits for calls of other threads. Throws Error when the component has stopped.
    explicit RawAccess(Component const& component);
    ~RawAccess();
    RawAccess(RawAccess const&) = delete;
    RawAccess& operator=(RawAccess const&) = delete;

    // Gives the procedure that is registered under an interface, its own name and the name of its
    // type, or null.
    BIBLookupProc Lookup() const noexcept;

    // The component's object behind settings, which must be of this component. It is not counted,
    // and valid for as long as settings are.
    ::PDFSettings* Object(Settings const& settings) const noexcept;

private:
    std::shared_ptr<detail::RunningComponent> fRunning;
    std::unique_ptr<detail::Turn> fTurn;
};

} // namespace pdfsettings
