// Listing settings against reads of the same folder that examine each file: by the system's calls,
// and by a library for programs on the desktop. The time for each file must not grow with their
// number.
#include "bench/Host.h"
#include "bench/TemporaryFolder.h"
#include "pdfsettings/SettingsList.h"

#include <benchmark/benchmark.h>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <gio/gio.h>
#include <map>
#include <memory>
#include <sys/stat.h>

namespace {

// A user's settings folder of so many files.
class Home {
public:
    explicit Home(std::int64_t files) {
        Enter();
        fFolder = pdfsettings::UserFolder();
        std::filesystem::create_directories(fFolder); // not for everybody everywhere
        for (std::int64_t i = 0; i < files; ++i) {
            std::ofstream(fFolder / ("settings " + std::to_string(i) + ".joboptions"));
        }
    }

    // Makes it the home of the process.
    void Enter() const {
        setenv("XDG_DATA_HOME", fRoot.Path().c_str(), 1);
        setenv("XDG_CONFIG_HOME", fRoot.Path().c_str(), 1);
    }

    std::filesystem::path const& Folder() const { return fFolder; }

private:
    bench::TemporaryFolder fRoot;
    std::filesystem::path fFolder;
};

// The home of so many files, which is made once: that takes longer than all that is measured. Lists
// as values run the component where nothing does; the tables are those of the one that runs here.
Home const& EnterHome(std::int64_t files) {
    bench::SharedComponent();
    static std::map<std::int64_t, Home> homes;
    Home const& home = homes.try_emplace(files, files).first->second;
    home.Enter();
    return home;
}

void CheckCount(benchmark::State& state, std::size_t found) {
    if (found != static_cast<std::size_t>(state.range(0))) {
        state.SkipWithError("other files than there are");
    }
}

void ListSettings(benchmark::State& state) {
    EnterHome(state.range(0));
    auto const& tables = bench::Tables();
    for (auto const _ : state) {
        auto const list =
            pdfsettings::detail::Share(tables, tables.statics.GetListofPDFSettings("Benchmark"));
        CheckCount(state, tables.arrays.Count(list.get()));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void ListSettingsAsValues(benchmark::State& state) {
    EnterHome(state.range(0));
    for (auto const _ : state) {
        CheckCount(state, pdfsettings::List().size());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void ReadFolder(benchmark::State& state) {
    Home const& home = EnterHome(state.range(0));
    for (auto const _ : state) {
        std::unique_ptr<DIR, int (*)(DIR*)> const folder(opendir(home.Folder().c_str()), &closedir);
        std::size_t files = 0;
        while (dirent const* const entry = readdir(folder.get())) {
            struct statx status {};
            statx(dirfd(folder.get()), entry->d_name, 0, STATX_BASIC_STATS, &status);
            files += S_ISREG(status.stx_mode) ? 1 : 0;
        }
        CheckCount(state, files);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void EnumerateFolder(benchmark::State& state) {
    Home const& home = EnterHome(state.range(0));
    std::unique_ptr<GFile, void (*)(void*)> const folder(
        g_file_new_for_path(home.Folder().c_str()), &g_object_unref);
    for (auto const _ : state) {
        std::unique_ptr<GFileEnumerator, void (*)(void*)> const enumerator(
            g_file_enumerate_children(
                folder.get(),
                "standard::name,standard::display-name,standard::type,time::modified",
                G_FILE_QUERY_INFO_NONE,
                nullptr,
                nullptr),
            &g_object_unref);
        std::size_t files = 0;
        while (GFileInfo* const info =
                   g_file_enumerator_next_file(enumerator.get(), nullptr, nullptr)) {
            ++files;
            g_object_unref(info);
        }
        CheckCount(state, files);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK(ListSettings)->RangeMultiplier(10)->Range(100, 10'000);
BENCHMARK(ListSettingsAsValues)->RangeMultiplier(10)->Range(100, 10'000);
BENCHMARK(ReadFolder)->RangeMultiplier(10)->Range(100, 10'000);
BENCHMARK(EnumerateFolder)->RangeMultiplier(10)->Range(100, 10'000);

} // namespace
