// What stands behind Settings.
#pragma once

#include "host/detail/RunningComponent.h"
#include "pdfsettings/Settings.h"

#include <memory>
#include <string>
#include <utility>

namespace pdfsettings {

// Belongs to the component, which may end before.
struct Settings::State {
    // REQUIRES: the caller has its Turn.
    State(std::shared_ptr<detail::RunningComponent> owner, detail::Ref<::PDFSettings> made)
        : fRunning(std::move(owner)),
          fSettings(fRunning->Own(std::move(made))) {}
    ~State() { fRunning->GiveBack(fSettings); }
    State(State const&) = delete;
    State& operator=(State const&) = delete;

    // REQUIRES: the caller has its Turn.
    ::PDFSettings* Get() const noexcept { return fSettings->get(); }

    std::shared_ptr<detail::RunningComponent> fRunning;
    detail::RunningComponent::OwnedSettings::iterator fSettings;
    std::string fPath;  // absolute; empty while bound to no file
    std::string fBytes; // of that file, as they were read or written last
};

} // namespace pdfsettings
