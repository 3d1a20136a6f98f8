#include "pdfsettings/Component.h"

#include "api/BIBRuntime.h"
#include "host/detail/RunningComponent.h"

#include <atomic>
#include <cstdlib>
#include <dlfcn.h>
#include <exception>
#include <unistd.h>
#include <utility>

namespace pdfsettings::detail {

namespace {

std::atomic<bool> gClaimed = false;

// The one that stops when the program ends.
std::mutex gExitLock;
RunningComponent* gRunning = nullptr;

// Of the thread, since the component reports on the thread of the call.
thread_local std::string gReport;

// A report that finds no memory is lost; the call's fallback text stands in for it.
void KeepReport(char const* message, void* /*client*/) noexcept {
    try {
        gReport = message;
    } catch (std::exception const&) {
        gReport.clear();
    }
}

[[noreturn]] void ThrowInUse() {
    throw Error("the settings component is in use already: a process can run it only once");
}

} // namespace

void ForgetReport() noexcept {
    gReport.clear();
}

void ThrowReport(std::string const& fallback) {
    std::string const report = std::exchange(gReport, {});
    throw Error(report.empty() ? fallback : report);
}

RunningComponent::RunningComponent() : fModule(nullptr, &dlclose) {
    if (gClaimed.exchange(true)) {
        ThrowInUse();
    }
    BIBRuntimeSetErrorChannel(&KeepReport, nullptr);
}

// What fails below is undone by the destructor, for the object is whole once the right is claimed.
RunningComponent::RunningComponent(std::string const& path) : RunningComponent() {
    fPath = path;
    // Everything is looked up at once: what is missing later would end the process.
    fModule.reset(dlopen(fPath.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (fModule == nullptr) {
        char const* const reason = dlerror();
        throw Error(
            std::string("cannot load the settings component: ") +
            (reason == nullptr ? "unknown error of the loader" : reason));
    }
    Start();
    fTables.emplace(&BIBRuntimeLookup);
    // The component registered the end of its static objects when it was loaded. What is registered
    // now comes before that, and stays so as long as the component is not loaded anew: so it stays
    // loaded until the program ends, whoever closes it.
    dlopen(fPath.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD | RTLD_NODELETE);
    static bool const kIsRegistered = std::atexit(&StopAtExit) == 0;
    static_cast<void>(kIsRegistered);
    std::lock_guard const guard(gExitLock);
    gRunning = this;
}

RunningComponent::~RunningComponent() {
    {
        std::lock_guard const guard(gExitLock);
        gRunning = nullptr;
    }
    fSettings.clear();
    Stop();
    fModule.reset();
    BIBRuntimeSetErrorChannel(nullptr, nullptr);
    gClaimed = false;
}

void* RunningComponent::FindSymbol(char const* name) const {
    void* const symbol = dlsym(fModule.get(), name);
    if (symbol == nullptr) {
        throw Error(fPath + " is no settings component: it has no " + name);
    }
    return symbol;
}

// Also a start that failed has to be undone before the component can be started again. For that it
// must have found the procedure that undoes it, which a runtime without memory may not give.
void RunningComponent::Start() {
    auto const terminate = Find<decltype(&PDFSettingsTerminate)>("PDFSettingsTerminate");
    auto const initialize = Find<decltype(&PDFSettingsInitialize)>("PDFSettingsInitialize");
    ForgetReport();
    if (BIBRuntimeLookup("BIB", "BIBUnregisterInterface", "BIBUnregisterInterface") == nullptr) {
        ThrowOutOfMemory();
    }
    // Somebody else's component is not stopped below because it cannot be started twice.
    if (BIBRuntimeLookup("PDFSettingsInterface", "NewFromFile", "PDFSettingsNewFromFileProc") !=
        nullptr) {
        ThrowInUse();
    }
    if (initialize(&BIBRuntimeLookup) == 0) {
        terminate();
        ThrowReport("the settings component does not start");
    }
    fTerminate = terminate;
}

void RunningComponent::Stop() noexcept {
    if (fTerminate != nullptr) {
        std::exchange(fTerminate, nullptr)();
    }
}

void RunningComponent::StopAtExit() noexcept {
    std::lock_guard const guard(gExitLock);
    if (gRunning != nullptr) {
        std::lock_guard const turn(gRunning->fInUse);
        gRunning->fSettings.clear();
        gRunning->Stop();
    }
}

RunningComponent::OwnedSettings::iterator RunningComponent::Own(Ref<::PDFSettings> settings) {
    fSettings.push_back(std::move(settings));
    return std::prev(fSettings.end());
}

void RunningComponent::GiveBack(OwnedSettings::iterator settings) noexcept {
    std::lock_guard const guard(fInUse);
    if (fTerminate != nullptr) {
        fSettings.erase(settings);
    }
}

long RunningComponent::Version() const {
    return Find<decltype(&PDFSettingsGetVersion)>("PDFSettingsGetVersion")();
}

} // namespace pdfsettings::detail

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

} // namespace pdfsettings
