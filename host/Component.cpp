#include "pdfsettings/Component.h"

#include "api/BIBRuntime.h"
#include "host/detail/RunningComponent.h"

#include <cstdlib>
#include <dlfcn.h>
#include <exception>
#include <new>
#include <unistd.h>
#include <utility>

namespace pdfsettings::detail {

namespace {

// Protects the following two variables. Lock order: the calls lock before this.
std::mutex gLock;
std::weak_ptr<RunningComponent> gRunning;
RunningComponent* gUnstopped = nullptr; // not yet stopped, whether or not it is still referenced

// Per thread: the component reports on the thread of the call.
thread_local std::string gReport;
// The component whose fAlive this thread has locked, and the number of Turns on this thread.
thread_local RunningComponent* gHeld = nullptr;
thread_local int gTurns = 0;
// The thread's error channel outside of Turns.
thread_local BIBRuntimeErrorProc gFormerChannel = nullptr;
thread_local void* gFormerClient = nullptr;

// If no memory is left for a report, it is lost, and the fallback text of the call is used.
void KeepReport(char const* message, void* /*client*/) noexcept {
    try {
        gReport = message;
    } catch (std::exception const&) {
        gReport.clear();
    }
}

// A procedure of the component that runs on the runtime behind lookup; null if none does.
void* RegisteredProcedure(BIBLookupProc lookup) noexcept {
    return lookup("PDFSettingsInterface", "NewFromFile", "PDFSettingsNewFromFileProc");
}

bool IsRegistered(BIBLookupProc lookup) noexcept {
    return RegisteredProcedure(lookup) != nullptr;
}

unsigned long UnregisterCount(BIBLookupProc lookup) noexcept {
    auto const find = reinterpret_cast<BIBGetUnregisterCountAddrProc>(
        lookup("BIB", "BIBGetUnregisterCountAddr", "BIBGetUnregisterCountAddr"));
    return find == nullptr ? 0 : *find();
}

[[noreturn]] void ThrowInUse() {
    throw Error(
        Fault::kInUse, "the settings component is in use already: a process can run it only once");
}

} // namespace

void ForgetReport() noexcept {
    gReport.clear();
}

void ThrowReport(std::string const& fallback) {
    std::string const report = std::exchange(gReport, {});
    ThrowReported(report.empty() ? fallback : report);
}

// If this throws, the destructor does not run: fModule unloads the file, and a component that was
// started is stopped explicitly.
RunningComponent::RunningComponent(std::string const& path)
    : fLookup(&BIBRuntimeLookup),
      fPath(path),
      fModule(nullptr, &dlclose) {
    // RTLD_NOW: with lazy binding, a missing symbol would end the process at the first call.
    fModule.reset(dlopen(fPath.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (fModule == nullptr) {
        char const* const reason = dlerror();
        throw Error(
            Fault::kComponent,
            std::string("cannot load the settings component: ") +
                (reason == nullptr ? "unknown error of the loader" : reason));
    }
    Initialize();
    try {
        fTables.emplace(fLookup);
    } catch (...) {
        Stop();
        throw;
    }
    // Functions registered with atexit run in reverse order, and the component registered the
    // destructors of its static objects when it was loaded. So StopAtExit runs before them, as long
    // as the component is not loaded again. RTLD_NODELETE keeps it loaded until the program ends.
    dlopen(fPath.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD | RTLD_NODELETE);
    static bool const kIsRegistered = std::atexit(&StopAtExit) == 0;
    static_cast<void>(kIsRegistered);
}

RunningComponent::RunningComponent(BIBLookupProc lookup)
    : fLookup(lookup),
      fModule(nullptr, &dlclose) {
    fTables.emplace(fLookup);
}

RunningComponent::~RunningComponent() {
    Stop();
}

namespace {

// The owner of a component; its destructor stops the component after the last reference is gone.
struct Run {
    template <class From>
    explicit Run(From const& from) : fComponent(from) {
        gUnstopped = &fComponent;
    }
    Run(Run const&) = delete;
    Run& operator=(Run const&) = delete;
    ~Run() {
        CallsLock calls;
        std::lock_guard const alone(calls);
        std::lock_guard const guard(gLock);
        fComponent.Stop();
        gUnstopped = gUnstopped == &fComponent ? nullptr : gUnstopped;
    }

    RunningComponent fComponent;
};

// The running component, or null. A component that its host has stopped does not count; its
// remaining users detect that themselves. Releases gLock before it drops the reference, since
// dropping the last one takes gLock too.
std::shared_ptr<RunningComponent> FindRunning() {
    std::shared_ptr<RunningComponent> running;
    {
        std::lock_guard const guard(gLock);
        running = gRunning.lock();
    }
    bool const isGone = running != nullptr && running->IsHosts() && running->HasStopped();
    return isGone ? nullptr : running;
}

// Starts the component at a path, or attaches to the one behind a lookup. REQUIRES: the calls lock
// is held, and no component is running.
template <class From>
std::shared_ptr<RunningComponent> Make(From const& from) {
    std::lock_guard const guard(gLock);
    if (gUnstopped != nullptr) {
        // The thread that released the last reference waits for the calls lock to stop it.
        gUnstopped->Stop();
    }
    auto const run = std::make_shared<Run>(from);
    std::shared_ptr<RunningComponent> running(run, &run->fComponent);
    gRunning = running;
    return running;
}

} // namespace

std::shared_ptr<RunningComponent> RunningComponent::Shared() {
    if (auto running = FindRunning()) {
        return running;
    }
    // Never released: repeated calls would otherwise start and stop the component each time.
    static auto& kept = *new std::shared_ptr<RunningComponent>;
    std::shared_ptr<RunningComponent> former;
    CallsLock calls;
    std::lock_guard const alone(calls);
    if (auto running = FindRunning()) {
        return running;
    }
    former = std::exchange(
        kept,
        IsRegistered(&BIBRuntimeLookup) && (gUnstopped == nullptr || gUnstopped->IsHosts())
            ? Make<BIBLookupProc>(&BIBRuntimeLookup)
            : Make(Component::DefaultPath().string()));
    return kept;
}

std::shared_ptr<RunningComponent> RunningComponent::Start(std::string const& path) {
    CallsLock calls;
    std::lock_guard const alone(calls);
    if (FindRunning() != nullptr) {
        ThrowInUse();
    }
    return Make(path);
}

std::shared_ptr<RunningComponent> RunningComponent::Attach(BIBLookupProc lookup) {
    CallsLock calls;
    std::lock_guard const alone(calls);
    if (FindRunning() != nullptr) {
        ThrowInUse();
    }
    if (!IsRegistered(lookup)) {
        throw Error(Fault::kStopped, "no settings component runs on this runtime");
    }
    return Make(lookup);
}

// A component that its host has unloaded and started again may be at another address.
bool RunningComponent::HasStopped() const noexcept {
    return fPath.empty() ? RegisteredProcedure(fLookup) !=
                               reinterpret_cast<void*>(fTables->settings.NewFromFile)
                         : fTerminate == nullptr;
}

void* RunningComponent::FindSymbol(char const* name) const {
    void* const symbol = fModule == nullptr ? nullptr : dlsym(fModule.get(), name);
    if (symbol == nullptr) {
        throw Error(Fault::kComponent, fPath + " is not a settings component: it has no " + name);
    }
    return symbol;
}

// Starts the component. A start that failed must be undone by terminate before the next one. For
// that the component needs BIBUnregisterInterface, which a runtime without memory may not return;
// so this is looked up first.
void RunningComponent::Initialize() {
    auto const terminate = Find<decltype(&PDFSettingsTerminate)>("PDFSettingsTerminate");
    auto const initialize = Find<decltype(&PDFSettingsInitialize)>("PDFSettingsInitialize");
    CallsLock calls;
    std::lock_guard const guard(calls);
    ForgetReport();
    if (fLookup("BIB", "BIBUnregisterInterface", "BIBUnregisterInterface") == nullptr) {
        throw std::bad_alloc();
    }
    // Tested before the start: a failed second start would be undone below, and that would stop the
    // other component.
    if (IsRegistered(fLookup)) {
        ThrowInUse();
    }
    if (initialize(fLookup) == 0) {
        terminate();
        ThrowReport("the settings component does not start");
    }
    fTerminate = terminate;
}

void RunningComponent::Stop() noexcept {
    CallsLock calls;
    std::lock_guard const guard(calls);
    if (fTerminate != nullptr) {
        std::exchange(fTerminate, nullptr)();
    }
}

void RunningComponent::StopAtExit() noexcept {
    std::shared_ptr<RunningComponent> running;
    {
        std::lock_guard const guard(gLock);
        running = gRunning.lock();
    }
    if (running != nullptr) {
        CallsLock calls;
        std::lock_guard const alone(calls);
        std::lock_guard const last(running->fAlive);
        running->Stop();
    }
}

long RunningComponent::Version() const {
    if (IsHosts()) {
        throw Error(Fault::kComponent, "no table has the version of a component that a host runs");
    }
    return Find<decltype(&PDFSettingsGetVersion)>("PDFSettingsGetVersion")();
}

void CallsLock::lock() noexcept {
    BIBRuntimeLockCalls();
}

void CallsLock::unlock() noexcept {
    BIBRuntimeUnlockCalls();
}

Turn::Turn(std::shared_ptr<RunningComponent> running, Use use)
    : fRunning(std::move(running)),
      fAlone(fCalls, std::defer_lock) {
    // A host may stop its component at any time when it has the lock.
    if (use == Use::kAlone || fRunning->IsHosts() ||
        fRunning->fListedAt != UnregisterCount(fRunning->fLookup)) {
        fAlone.lock();
    }
    // The same lock order as in StopAtExit.
    if (gHeld != fRunning.get()) {
        fAlive = std::shared_lock(fRunning->fAlive);
    }
    RequireRunning();
    if (fAlive.owns_lock()) {
        gHeld = fRunning.get();
    }
    if (gTurns++ == 0) {
        gFormerChannel = BIBRuntimeSetThreadErrorChannel(&KeepReport, nullptr, &gFormerClient);
    }
}

Turn::~Turn() {
    if (--gTurns == 0) {
        BIBRuntimeSetThreadErrorChannel(gFormerChannel, gFormerClient, nullptr);
    }
    if (fAlive.owns_lock()) {
        gHeld = nullptr;
    }
}

void Turn::RequireRunning() const {
    if (fRunning->HasStopped()) {
        throw Error(
            Fault::kStopped,
            fRunning->fPath.empty() ? "the host has stopped the settings component"
                                    : "the settings component has stopped: the program is ending");
    }
}

void Turn::NoteList() noexcept {
    fRunning->fListedAt = UnregisterCount(fRunning->fLookup);
}

} // namespace pdfsettings::detail

namespace pdfsettings {

// Asks the loader for the folder of the runtime's library: the search path of this library would
// depend on how the program was linked.
std::filesystem::path Component::DefaultPath() {
    std::filesystem::path name = "libPDFSettings.so";
    Dl_info runtime{};
    if (dladdr(reinterpret_cast<void*>(&BIBRuntimeLookup), &runtime) == 0) {
        return name;
    }
    std::filesystem::path const folder = std::filesystem::path(runtime.dli_fname).parent_path();
    std::filesystem::path const installed = folder / PDFSETTINGS_MODULE_FOLDER / name;
    return access(installed.c_str(), F_OK) == 0 ? installed : folder / name;
}

Component::Component(std::shared_ptr<detail::RunningComponent> running)
    : fRunning(std::move(running)) {}

Component Component::Shared() {
    return Component(detail::RunningComponent::Shared());
}

Component Component::Start(std::filesystem::path const& library) {
    return Component(detail::RunningComponent::Start(library.string()));
}

long Component::Version() const {
    return fRunning->Version();
}

} // namespace pdfsettings
