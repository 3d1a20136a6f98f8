// One run of the component, from the loading of its file to its stop, and what it reports.
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

// Forgets what was reported on this thread, before a call whose report is asked for.
void ForgetReport() noexcept;

// Throws Error (kComponent) with the last report on this thread, or with fallback when there is
// none; std::bad_alloc where the report says so.
[[noreturn]] void ThrowReport(std::string const& fallback);

// What a procedure of the component gives. Throws what it reported when that is null.
template <class Procedure, class... Arguments>
auto* Reported(char const* operation, Procedure procedure, Arguments... arguments) {
    ForgetReport();
    auto* const result = procedure(arguments...);
    if (result == nullptr) {
        ThrowReport(std::string(operation) + " failed without a reason");
    }
    return result;
}

// The component that this process runs, once at a time: one that was started here, which stops when
// nobody holds it any more and at the latest before the program's static objects are destroyed, or
// one that a host runs, which is only used and never stopped.
class RunningComponent {
public:
    // The one that runs, or the usual one, which is started and then runs until the program ends.
    // Throws Error.
    static std::shared_ptr<RunningComponent> Shared();

    // Starts the one at path. Throws Error, with kInUse when one runs already.
    static std::shared_ptr<RunningComponent> Start(std::string const& path);

    // Uses the one that a host runs on the runtime behind lookup. Throws the same.
    static std::shared_ptr<RunningComponent> Attach(BIBLookupProc lookup);

    // Loads the component from path and starts it. Throws Error; nothing stays started or loaded
    // then. REQUIRES, here and below: none runs.
    explicit RunningComponent(std::string const& path);
    // Uses the one behind lookup.
    explicit RunningComponent(BIBLookupProc lookup);
    ~RunningComponent();
    RunningComponent(RunningComponent const&) = delete;
    RunningComponent& operator=(RunningComponent const&) = delete;

    BIBLookupProc Lookup() const noexcept { return fLookup; }
    bool IsHosts() const noexcept { return fPath.empty(); }
    bool HasStopped() const noexcept;

    // Does nothing for one that has stopped or that a host runs.
    void Stop() noexcept;

    // Throws Error (kComponent) for one that a host runs, since no row tells its version.
    long Version() const;

private:
    friend class Turn;

    void Initialize();
    static void StopAtExit() noexcept;

    // An exported procedure. Throws Error when there is none of that name.
    template <class Proc>
    Proc Find(char const* name) const {
        return reinterpret_cast<Proc>(FindSymbol(name));
    }
    void* FindSymbol(char const* name) const;

    BIBLookupProc fLookup;
    std::string fPath; // empty for one that a host runs
    std::unique_ptr<void, int (*)(void*)> fModule;
    decltype(&PDFSettingsTerminate) fTerminate = nullptr; // null while it does not run
    std::optional<Bindings> fTables;
    std::shared_mutex fAlive; // held by calls together, and by the stop alone
    // The unregister counter at the time of the first list; 0 before.
    std::atomic<unsigned long> fListedAt = 0;
};

// The lock around calls into the component, which the runtime has for all that use it.
struct CallsLock {
    // NOLINTBEGIN(readability-identifier-naming): the names of the standard's locks
    void lock() noexcept;
    void unlock() noexcept;
    // NOLINTEND(readability-identifier-naming)
};

// The right to call the component and the runtime. A thread that has it may take it again.
class Turn {
public:
    // Lists may be read by many threads at once, except for the first one, which binds what it
    // needs. Everything else waits for its turn: validation has one list for the whole process.
    enum class Use { kAlone, kList };

    // Waits for the other threads. Throws Error (kStopped) when the component has stopped.
    explicit Turn(
        std::shared_ptr<RunningComponent> running = RunningComponent::Shared(),
        Use use = Use::kAlone);
    ~Turn();
    Turn(Turn const&) = delete;
    Turn& operator=(Turn const&) = delete;

    // The tables, for as long as this lives.
    Bindings const& operator*() const noexcept { return *fRunning->fTables; }
    Bindings const* operator->() const noexcept { return &*fRunning->fTables; }

    BIBLookupProc Lookup() const noexcept { return fRunning->Lookup(); }

    // Says that a list was read.
    void NoteList() noexcept;

private:
    void RequireRunning() const;

    std::shared_ptr<RunningComponent> fRunning;
    CallsLock fCalls;
    std::unique_lock<CallsLock> fAlone;
    std::shared_lock<std::shared_mutex> fAlive;
};

} // namespace pdfsettings::detail
