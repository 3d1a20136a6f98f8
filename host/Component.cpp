#include "pdfsettings/Component.h"
#include "api/BIBRuntime.h"
#include "host/detail/RunningComponent.h"
#include "host/detail/SettingsState.h"
#include "pdfsettings/RawAccess.h"

#include <dlfcn.h>
#include <unistd.h>

namespace pdfsettings {

// The folder of the runtime's library is asked of the loader, since a search on behalf of this code
// would depend on how the program was linked.
std::string Component::DefaultPath() {
    std::string name = "libPDFSettings.so";
    Dl_info runtime{};
    if (dladdr(reinterpret_cast<void*>(&BIBRuntimeLookup), &runtime) == 0) {
        return name;
    }
    std::string const library = runtime.dli_fname;
    std::string const folder = library.substr(0, library.rfind('/') + 1);
    std::string const installed = folder + PDFSETTINGS_MODULE_FOLDER "/" + name;
    return access(installed.c_str(), F_OK) == 0 ? installed : folder + name;
}

Component::Component(std::string const& path)
    : fRunning(std::make_shared<detail::RunningComponent>(path)) {}

Component::~Component() = default;

long Component::Version() const {
    return fRunning->Version();
}

RawAccess::RawAccess(Component const& component)
    : fRunning(component.fRunning),
      fTurn(std::make_unique<detail::Turn>(*fRunning)) {}

RawAccess::~RawAccess() = default;

BIBLookupProc RawAccess::Lookup() const noexcept {
    return &BIBRuntimeLookup;
}

::PDFSettings* RawAccess::Object(Settings const& settings) const noexcept {
    return settings.fState->Get();
}

} // namespace pdfsettings
