// Listing settings against its peer, a plain read of the same folder that examines each file. The
// time for each file must not grow with their number.
#include "host/Component.h"
#include "host/SettingsList.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/stat.h>

namespace {

// A user's settings folder of so many files, for as long as this lives.
class Home {
public:
    explicit Home(std::int64_t files) {
        std::string pattern = (std::filesystem::temp_directory_path() / "home-XXXXXX").string();
        fRoot = mkdtemp(pattern.data());
        setenv("XDG_DATA_HOME", fRoot.c_str(), 1);
        setenv("XDG_CONFIG_HOME", fRoot.c_str(), 1);
        fFolder = pdfsettings::SettingsList::UserFolder(fComponent);
        for (std::int64_t i = 0; i < files; ++i) {
            std::ofstream(fFolder / ("settings " + std::to_string(i) + ".joboptions"));
        }
    }
    ~Home() { std::filesystem::remove_all(fRoot); }
    Home(Home const&) = delete;
    Home& operator=(Home const&) = delete;

    pdfsettings::Component const& Component() const { return fComponent; }
    std::filesystem::path const& Folder() const { return fFolder; }

private:
    pdfsettings::Component fComponent;
    std::filesystem::path fRoot;
    std::filesystem::path fFolder;
};

void SetCounters(benchmark::State& state) {
    state.SetComplexityN(state.range(0));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void ListSettings(benchmark::State& state) {
    Home const home(state.range(0));
    for (auto const _ : state) {
        auto const list = pdfsettings::SettingsList::Read(home.Component());
        if (list.size() < static_cast<std::size_t>(state.range(0))) {
            state.SkipWithError("files are missing in the list");
        }
    }
    SetCounters(state);
}

void ReadFolder(benchmark::State& state) {
    Home const home(state.range(0));
    for (auto const _ : state) {
        for (auto const& entry : std::filesystem::directory_iterator(home.Folder())) {
            struct stat status {};
            stat(entry.path().c_str(), &status);
            benchmark::DoNotOptimize(status);
        }
    }
    SetCounters(state);
}

BENCHMARK(ReadFolder)->RangeMultiplier(10)->Range(100, 10000)->Complexity();
BENCHMARK(ListSettings)->RangeMultiplier(10)->Range(100, 10000)->Complexity();

} // namespace

BENCHMARK_MAIN();
