#include "pdfsettings/RawAccess.h"

#include "api/BIBRuntime.h"
#include "host/detail/RunningComponent.h"
#include "host/detail/SettingsState.h"
#include "pdfsettings/Component.h"

namespace pdfsettings {

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
