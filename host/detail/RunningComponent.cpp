#include "host/detail/RunningComponent.h"

#include "host/Error.h"
#include "runtime/BIBRuntime.h"

#include <atomic>
#include <dlfcn.h>

namespace pdfsettings::detail {

namespace {

std::atomic<bool> gClaimed = false;

std::string LastLoaderError() {
    char const* const text = dlerror();
    return text == nullptr ? "unknown error of the loader" : text;
}

} // namespace

Claim::Claim() {
    if (gClaimed.exchange(true)) {
        throw Error("the settings component is in use already: a process can run it only once");
    }
}

Claim::~Claim() {
    gClaimed = false;
}

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

void* Module::FindSymbol(char const* name) const {
    void* const symbol = dlsym(fHandle, name);
    if (symbol == nullptr) {
        throw Error(fPath + " is no settings component: it has no " + name);
    }
    return symbol;
}

// Also a start that failed has to be undone before the component can be started again.
Start::Start(Module const& module)
    : fTerminate(module.Find<decltype(&PDFSettingsTerminate)>("PDFSettingsTerminate")) {
    auto const initialize = module.Find<decltype(&PDFSettingsInitialize)>("PDFSettingsInitialize");
    ForgetReport();
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
      fTables(&BIBRuntimeLookup) {}

long RunningComponent::Version() const {
    return fModule.Find<decltype(&PDFSettingsGetVersion)>("PDFSettingsGetVersion")();
}

} // namespace pdfsettings::detail
