#pragma once

#include <filesystem>
#include <stdlib.h>
#include <string>

namespace bench {

// A new folder for as long as this lives.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "bench-XXXXXX").string();
        fPath = mkdtemp(pattern.data());
    }
    ~TemporaryFolder() { std::filesystem::remove_all(fPath); }
    TemporaryFolder(TemporaryFolder const&) = delete;
    TemporaryFolder& operator=(TemporaryFolder const&) = delete;

    std::filesystem::path const& Path() const { return fPath; }

private:
    std::filesystem::path fPath;
};

} // namespace bench
