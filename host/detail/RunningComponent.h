// One run of the component, from the loading of its file to its stop, and what it reports.
#pragma once

#include "host/detail/Bindings.h"
#include "pdfsettings/Error.h"

#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace pdfsettings::detail {

// Forgets what was reported on this thread, before a call whose report is asked for.
void ForgetReport() noexcept;

// Throws Error with the last report on this thread, or with fallback when there is none.
[[noreturn]] void ThrowReport(std::string const& fallback);

// What a procedure of the component gives. Throws Error with what it reported when that is null.
template <class Procedure, class... Arguments>
auto* Reported(char const* operation, Procedure procedure, Arguments... arguments) {
    ForgetReport();
    auto* const result = procedure(arguments...);
    if (result == nullptr) {
        ThrowReport(std::string(operation) + " failed without a reason");
    }
    return result;
}

// A component that is loaded and runs, which a process has once at a time. While it lives, the
// runtime's reports are kept for the text of an exception; afterwards they go where they go by
// default. Whatever uses the tables holds a share of it, so that the component runs until the last
// object that belongs to it is gone, or until the program ends: then it stops before its own static
// objects are destroyed, and what is destroyed later finds it stopped.
class RunningComponent {
public:
    // Throws Error; nothing stays started or loaded then.
    explicit RunningComponent(std::string const& path);
    ~RunningComponent();
    RunningComponent(RunningComponent const&) = delete;
    RunningComponent& operator=(RunningComponent const&) = delete;

    using OwnedSettings = std::list<Ref<::PDFSettings>>;

    // Takes settings over until they are given back. REQUIRES: the caller has its Turn.
    OwnedSettings::iterator Own(Ref<::PDFSettings> settings);

    // Releases settings. Waits for other threads. Does nothing when the component has stopped.
    void GiveBack(OwnedSettings::iterator settings) noexcept;

    long Version() const;

private:
    friend class Turn;

    // Claims the right to run the component, which the destructor gives back.
    RunningComponent();

    void Start();
    void Stop() noexcept;
    static void StopAtExit() noexcept;

    // An exported procedure. Throws Error when there is none of that name.
    template <class Proc>
    Proc Find(char const* name) const {
        return reinterpret_cast<Proc>(FindSymbol(name));
    }
    void* FindSymbol(char const* name) const;

    std::recursive_mutex fInUse;
    std::string fPath;
    std::unique_ptr<void, int (*)(void*)> fModule;
    decltype(&PDFSettingsTerminate) fTerminate = nullptr; // null while it does not run
    std::optional<Bindings> fTables;
    OwnedSettings fSettings;
};

// The right to call the component and the runtime, which one thread has at a time: the component
// itself locks nothing. A thread that has it may take it again.
class Turn {
public:
    // Waits for the other threads. Throws Error when the component has stopped.
    // REQUIRES: running outlives this.
    explicit Turn(RunningComponent& running) : fGuard(running.fInUse), fTables(*running.fTables) {
        if (running.fTerminate == nullptr) {
            throw Error("the settings component has stopped: the program is ending");
        }
    }

    // The tables, for as long as this lives.
    Bindings const& operator*() const noexcept { return fTables; }
    Bindings const* operator->() const noexcept { return &fTables; }

private:
    std::lock_guard<std::recursive_mutex> fGuard;
    Bindings const& fTables;
};

} // namespace pdfsettings::detail
