// Reads many files from a pool of threads: read_many FILE...
#include <algorithm>
#include <atomic>
#include <future>
#include <iostream>
#include <pdfsettings/Settings.h>
#include <thread>
#include <vector>

static bool IsSettings(char const* file) try {
    pdfsettings::Settings::Open(file);
    return true;
} catch (pdfsettings::Error const& error) {
    std::cerr << std::string(error.what()) + "\n";
    return false;
}

int main(int argc, char** argv) {
    std::atomic<int> next = 1;
    std::atomic<int> settings = 0;
    auto const readFiles = [&] {
        for (int file = next++; file < argc; file = next++) {
            settings += IsSettings(argv[file]) ? 1 : 0;
        }
    };
    std::vector<std::future<void>> pool(std::max(1U, std::thread::hardware_concurrency()));
    std::ranges::generate(pool, [&] { return std::async(std::launch::async, readFiles); });
    pool.clear(); // waits for all of them
    std::cout << settings << " of " << argc - 1 << " files are settings\n";
    return settings == argc - 1 ? 0 : 1;
}
