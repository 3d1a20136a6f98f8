// Opening a file against reading its bytes and then settings from them, and saving one against
// plainly replacing it.
#include "bench/Content.h"
#include "bench/Host.h"
#include "bench/TemporaryFolder.h"
#include "pdfsettings/Settings.h"

#include <atomic>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using bench::Content;
using bench::Keys;
using pdfsettings::detail::Share;

// The whole of a file by the system's own calls.
std::string ReadFile(std::string const& path) {
    int const file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status {};
    fstat(file, &status);
    std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
    if (read(file, bytes.data(), bytes.size()) != status.st_size) {
        bytes.clear();
    }
    close(file);
    return bytes;
}

// Makes a file anew, in the place of one that is there.
bool ReplaceFile(std::string const& path, std::string const& bytes) {
    unlink(path.c_str());
    int const file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    bool const isWritten =
        write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    return close(file) == 0 && isWritten;
}

Content const& ContentOf(benchmark::State const& state) {
    return bench::GetContent(static_cast<std::size_t>(state.range(0)), Keys::kFew);
}

void OpenSettings(benchmark::State& state) {
    bench::TemporaryFolder const folder;
    std::string const file = folder.Path() / "a.joboptions";
    ReplaceFile(file, ContentOf(state).joboptions);
    auto const& tables = bench::Tables();
    auto const path = bench::MakePath(file);
    for (auto const _ : state) {
        benchmark::DoNotOptimize(Share(tables, tables.settings.NewFromFile(path.get(), "")));
    }
}

void ReadFileThenSettings(benchmark::State& state) {
    bench::TemporaryFolder const folder;
    std::string const file = folder.Path() / "a.joboptions";
    ReplaceFile(file, ContentOf(state).joboptions);
    for (auto const _ : state) {
        auto const buffer = bench::MakeBuffer(ReadFile(file));
        benchmark::DoNotOptimize(bench::ReadSettings(buffer.get(), ""));
    }
}

void SaveSettings(benchmark::State& state) {
    bench::TemporaryFolder const folder;
    auto const& tables = bench::Tables();
    auto const path = bench::MakePath(folder.Path() / "a.joboptions");
    auto const buffer = bench::MakeBuffer(ContentOf(state).joboptions);
    auto const settings = bench::ReadSettings(buffer.get(), "");
    for (auto const _ : state) {
        pdfsettings::detail::ThrowIfError(
            tables, tables.settings.Write(settings.get(), path.get()));
    }
}

void ReplaceFilePlainly(benchmark::State& state) {
    bench::TemporaryFolder const folder;
    std::string const file = folder.Path() / "a.joboptions";
    for (auto const _ : state) {
        if (!ReplaceFile(file, ContentOf(state).joboptions)) {
            state.SkipWithError("not written");
        }
    }
}

// A hundred files by so many threads, with the C++ API.
void OpenMany(benchmark::State& state) {
    constexpr int kFiles = 100;
    bench::TemporaryFolder const folder;
    std::string const file = folder.Path() / "a.joboptions";
    ReplaceFile(file, bench::GetContent(1, Keys::kFew).joboptions);
    for (auto const _ : state) {
        std::atomic<int> next = 0;
        std::vector<std::jthread> pool;
        for (std::int64_t i = 0; i < state.range(0); ++i) {
            pool.emplace_back([&] {
                while (next++ < kFiles) {
                    benchmark::DoNotOptimize(pdfsettings::Settings::Open(file));
                }
            });
        }
    }
    state.SetItemsProcessed(state.iterations() * kFiles);
}

BENCHMARK(OpenMany)->Arg(1)->Arg(2)->UseRealTime();
BENCHMARK(OpenSettings)->Arg(1)->Arg(100);
BENCHMARK(ReadFileThenSettings)->Arg(1)->Arg(100);
BENCHMARK(SaveSettings)->Arg(1)->Arg(100);
BENCHMARK(ReplaceFilePlainly)->Arg(1)->Arg(100);

} // namespace
