// Reads the settings files in a folder with the C++ API, and prints the processor time in seconds:
// read_sets FOLDER. The peer of bench/python.py.
#include "pdfsettings/Settings.h"

#include <ctime>
#include <filesystem>
#include <iostream>
#include <vector>

int main(int argc, char** argv) {
    std::vector<std::filesystem::path> files;
    for (auto const& entry : std::filesystem::directory_iterator(argc > 1 ? argv[1] : ".")) {
        if (entry.path().extension() == ".joboptions") {
            files.push_back(entry.path());
        }
    }
    std::size_t values = 0;
    std::clock_t const begin = std::clock();
    for (auto const& file : files) {
        auto const settings = pdfsettings::Settings::Open(file);
        values += settings.Values().size();
    }
    std::clock_t const end = std::clock();
    std::cout << static_cast<double>(end - begin) / CLOCKS_PER_SEC << "\n";
    return values == 0 ? 1 : 0;
}
