// Loading, starting, stopping and unloading the component against loading a small library and
// looking a hundred procedures up in it.
#include "bench/Host.h"

#include "api/BIBRuntime.h"
#include "api/PDFSettings.h"

#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <string>
#include <vector>

namespace {

template <class Proc>
Proc Find(void* library, char const* name) {
    return reinterpret_cast<Proc>(dlsym(library, name));
}

void StartComponent(benchmark::State& state) {
    bench::StopSharedComponent();
    std::string const path = pdfsettings::Component::DefaultPath();
    for (auto const _ : state) {
        void* const component = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        auto const start =
            Find<decltype(&PDFSettingsInitialize)>(component, "PDFSettingsInitialize");
        auto const stop = Find<decltype(&PDFSettingsTerminate)>(component, "PDFSettingsTerminate");
        if (start(&BIBRuntimeLookup) == 0) {
            state.SkipWithError("the component does not start");
        }
        stop();
        dlclose(component);
    }
}

void LoadLibrary(benchmark::State& state) {
    std::vector<std::string> names;
    for (int number = 10; number < 110; ++number) {
        names.push_back("Procedure" + std::to_string(number));
    }
    for (auto const _ : state) {
        void* const library = dlopen(BENCH_PEER_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        for (std::string const& name : names) {
            if (dlsym(library, name.c_str()) == nullptr) {
                state.SkipWithError("no such procedure");
            }
        }
        dlclose(library);
    }
}

BENCHMARK(StartComponent);
BENCHMARK(LoadLibrary);

} // namespace
