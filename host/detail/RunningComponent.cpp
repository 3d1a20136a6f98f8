#include "host/detail/RunningComponent.h"

#include "api/BIBRuntime.h"

#include <atomic>
#include <cstdlib>
#include <dlfcn.h>

namespace pdfsettings::detail {

namespace {

std::atomic<bool> gClaimed = false;

// The one that stops when the program ends.
std::mutex gExitLock;
RunningComponent* gRunning = nullptr;

[[noreturn]] void ThrowInUse() {
    throw Error("the settings component is in use already: a process can run it only once");
}

std::string LastLoaderError() {
    char const* const text = dlerror();
    return text == nullptr ? "unknown error of the loader" : text;
}

} // namespace

Claim::Claim() {
    if (gClaimed.exchange(true)) {
        ThrowInUse();
    }
}

Claim::~Claim() {
    gClaimed = false;
}

// Everything is looked up at once: what is missing later would end the process.
Module::Module(std::string const& path)
    : fPath(path),
      fHandle(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (fHandle == nullptr) {
        throw Error("cannot load the settings component: " + LastLoaderError());
    }
}

Module::~Module() {
    dlclose(fHandle);
}

void Module::KeepLoaded() const noexcept {
    dlopen(fPath.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD | RTLD_NODELETE);
}

void* Module::FindSymbol(char const* name) const {
    void* const symbol = dlsym(fHandle, name);
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

Start::~Start() {
    fTerminate();
}

RunningComponent::RunningComponent(std::string const& path)
    : fModule(path),
      fStart(fModule),
      fTables(&BIBRuntimeLookup) {
    // The component registered the end of its static objects when it was loaded. What is registered
    // now comes before that, and stays so as long as the component is not loaded anew.
    fModule.KeepLoaded();
    static bool const kIsRegistered = std::atexit([] { StopAtExit(); }) == 0;
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
        gRunning->Stop();
    }
}

void RunningComponent::Stop() noexcept {
    std::lock_guard const guard(fInUse);
    fSettings.clear();
    fStart.reset();
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
