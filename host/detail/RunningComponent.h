// The running component, calls to it, and its reports.
#pragma once

#include "host/detail/Bindings.h"
#include "pdfsettings/Error.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string>

namespace pdfsettings::detail {

// Clears the thread's report, before a call whose report will be read.
void ForgetReport() noexcept;

// Throws Error (kComponent) with the thread's last report, or with fallback if there is none;
// std::bad_alloc if the report says that memory ran out.
[[noreturn]] void ThrowReport(std::string const& fallback);

// The result of a procedure of the component. Throws its report if the result is null.
template <class Procedure, class... Arguments>
auto* Reported(char const* operation, Procedure procedure, Arguments... arguments) {
    ForgetReport();
    auto* const result = procedure(arguments...);
    if (result == nullptr) {
        ThrowReport(std::string(operation) + " failed without a reason");
    }
    return result;
}

// The component that this process runs; there is one at a time, shared by its users. A component
// that was started here is loaded with dlopen and initialized. It stops when the last reference is
// released, or at the latest at exit, before the program's static objects are destroyed; it stays
// loaded and can be started again. The reference that Shared() keeps makes its component run until
// exit. A component that a host runs is used but never stopped. Starting and stopping happen under
// the calls lock. If a new component is requested while the last user of the former one still waits
// for this lock to stop it, the former one is stopped first. Calls hold fAlive shared, and the stop
// at exit holds it exclusively: it waits for running calls, and later calls fail with kStopped.
class RunningComponent {
public:
    // The running component, or else the one at the default path, which is started and then runs
    // until the program ends. Throws Error.
    static std::shared_ptr<RunningComponent> Shared();

    // Starts the component at path. Throws Error, with kInUse if one is running.
    static std::shared_ptr<RunningComponent> Start(std::string const& path);

    // Uses the component that a host runs on the runtime behind lookup. Throws Error: kInUse, and
    // kStopped if there is none.
    static std::shared_ptr<RunningComponent> Attach(BIBLookupProc lookup);

    // Loads the component from path and starts it. Throws Error, with nothing left started or
    // loaded. REQUIRES, for both constructors: no component is running.
    explicit RunningComponent(std::string const& path);
    // Uses the component behind lookup.
    explicit RunningComponent(BIBLookupProc lookup);
    ~RunningComponent();
    RunningComponent(RunningComponent const&) = delete;
    RunningComponent& operator=(RunningComponent const&) = delete;

    BIBLookupProc Lookup() const noexcept { return fLookup; }
    bool IsHosts() const noexcept { return fPath.empty(); }
    bool HasStopped() const noexcept;

    // Does nothing for a component that has stopped, or that a host runs.
    void Stop() noexcept;

    // Throws Error (kComponent) for a component that a host runs: no row returns its version.
    long Version() const;

private:
    friend class Turn;

    void Initialize();
    static void StopAtExit() noexcept;

    // An exported procedure. Throws Error if there is none of that name.
    template <class Proc>
    Proc Find(char const* name) const {
        return reinterpret_cast<Proc>(FindSymbol(name));
    }
    void* FindSymbol(char const* name) const;

    BIBLookupProc fLookup;
    std::string fPath; // empty for a component that a host runs
    std::unique_ptr<void, int (*)(void*)> fModule;
    decltype(&PDFSettingsTerminate) fTerminate = nullptr; // null unless started here and running
    std::optional<Bindings> fTables;
    std::shared_mutex fAlive; // shared by calls, exclusive for the stop at exit
    // The unregister counter when a list was last read; 0 before the first list.
    std::atomic<unsigned long> fListedAt = 0;
};

// The runtime's lock for calls to the component, shared by all its users in the process.
struct CallsLock {
    // NOLINTBEGIN(readability-identifier-naming): the names of the standard's locks
    void lock() noexcept;
    void unlock() noexcept;
    // NOLINTEND(readability-identifier-naming)
};

// The right to call the component and the runtime, released by the destructor. Recursive within a
// thread.
class Turn {
public:
    // Many threads may read lists at once, except for the first list, and the first after the
    // unregister counter changed: these look up procedures. All other calls are made one at a time:
    // validation has state that is global to the process.
    enum class Use { kAlone, kList };

    // Waits for other threads. Throws Error (kStopped) if the component has stopped.
    explicit Turn(
        std::shared_ptr<RunningComponent> running = RunningComponent::Shared(),
        Use use = Use::kAlone);
    ~Turn();
    Turn(Turn const&) = delete;
    Turn& operator=(Turn const&) = delete;

    // The tables, valid as long as this.
    Bindings const& operator*() const noexcept { return *fRunning->fTables; }
    Bindings const* operator->() const noexcept { return &*fRunning->fTables; }

    BIBLookupProc Lookup() const noexcept { return fRunning->Lookup(); }

    // Records that a list was read.
    void NoteList() noexcept;

private:
    void RequireRunning() const;

    std::shared_ptr<RunningComponent> fRunning;
    CallsLock fCalls;
    std::unique_lock<CallsLock> fAlone;
    std::shared_lock<std::shared_mutex> fAlive;
};

} // namespace pdfsettings::detail
