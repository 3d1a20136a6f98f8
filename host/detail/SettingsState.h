// What stands behind Settings.
#pragma once

#include "host/detail/RunningComponent.h"
#include "pdfsettings/Settings.h"

#include <memory>
#include <mutex>
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

    // The file that the settings are bound to, as it was read or written last.
    struct Binding {
        std::string fPath; // absolute; empty while there is none
        std::string fBytes;
    };

    Binding Bound() const {
        std::lock_guard const guard(fBindingInUse);
        return fBinding;
    }

    void Bind(std::string path, std::string bytes) {
        std::lock_guard const guard(fBindingInUse);
        fBinding = {std::move(path), std::move(bytes)};
    }

private:
    mutable std::mutex fBindingInUse;
    Binding fBinding;
};

} // namespace pdfsettings
