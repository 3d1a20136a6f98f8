#include "host/detail/RunningComponent.h"

#include "api/BIBRuntime.h"

#include <atomic>
#include <cstdlib>
#include <dlfcn.h>
#include <exception>
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

Claim::Claim() {
    if (gClaimed.exchange(true)) {
        ThrowInUse();
    }
    BIBRuntimeSetErrorChannel(&KeepReport, nullptr);
}

Claim::~Claim() {
    BIBRuntimeSetErrorChannel(nullptr, nullptr);
    gClaimed = false;
}

// Everything is looked up at once: what is missing later would end the process.
Module::Module(std::string const& path)
    : fPath(path),
      fHandle(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL), &dlclose) {
    if (fHandle == nullptr) {
        char const* const reason = dlerror();
        throw Error(
            std::string("cannot load the settings component: ") +
            (reason == nullptr ? "unknown error of the loader" : reason));
    }
}

void Module::KeepLoaded() const noexcept {
    dlopen(fPath.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD | RTLD_NODELETE);
}

void* Module::FindSymbol(char const* name) const {
    void* const symbol = dlsym(fHandle.get(), name);
    if (symbol == nullptr) {
        throw Error(fPath + " is no settings component: it has no " + name);
    }
    return symbol;
}

// Also a start that failed has to be undone before the component can be started again. For that it
// must have found the procedure that undoes it, which a runtime without memory may not give.
Start::Start(Module const& module)
    : fTerminate(module.Find<decltype(&PDFSettingsTerminate)>("PDFSettingsTerminate")) {
    auto const initialize = module.Find<decltype(&PDFSettingsInitialize)>("PDFSettingsInitialize");
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
        fTerminate();
        ThrowReport("the settings component does not start");
    }
}

RunningComponent::RunningComponent(std::string const& path)
    : fModule(path),
      fStart(fModule),
      fTables(&BIBRuntimeLookup) {
    // The component registered the end of its static objects when it was loaded. What is registered
    // now comes before that, and stays so as long as the component is not loaded anew.
    fModule.KeepLoaded();
    static bool const kIsRegistered = std::atexit(&StopAtExit) == 0;
    static_cast<void>(kIsRegistered);
    std::lock_guard const guard(gExitLock);
    gRunning = this;
}

RunningComponent::~RunningComponent() {
    std::lock_guard const guard(gExitLock);
    gRunning = nullptr;
}

void RunningComponent::StopAtExit() noexcept {
    std::lock_guard const guard(gExitLock);
    if (gRunning != nullptr) {
        std::lock_guard const turn(gRunning->fInUse);
        gRunning->fSettings.clear();
        gRunning->fStart.reset();
    }
}

RunningComponent::OwnedSettings::iterator RunningComponent::Own(Ref<::PDFSettings> settings) {
    fSettings.push_back(std::move(settings));
    return std::prev(fSettings.end());
}

void RunningComponent::GiveBack(OwnedSettings::iterator settings) noexcept {
    std::lock_guard const guard(fInUse);
    if (fStart) {
        fSettings.erase(settings);
    }
}

long RunningComponent::Version() const {
    return fModule.Find<decltype(&PDFSettingsGetVersion)>("PDFSettingsGetVersion")();
}

} // namespace pdfsettings::detail
