// A folder for the files of one test.
#pragma once

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numeric>
#include <set>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace support {

// Where the tests of root may make folders that no other user could exchange; for others any place
// is one.
inline std::filesystem::path OwnPlace() {
    return geteuid() == 0 ? "/run" : std::filesystem::temp_directory_path();
}

// The folder goes with all that is in it.
class TemporaryFolder {
public:
    explicit TemporaryFolder(
        std::filesystem::path const& parent = std::filesystem::temp_directory_path()) {
        std::string name = (parent / "settings-XXXXXX").string();
        fPath = mkdtemp(name.data());
    }
    ~TemporaryFolder() { std::filesystem::remove_all(fPath); }
    TemporaryFolder(TemporaryFolder const&) = delete;
    TemporaryFolder& operator=(TemporaryFolder const&) = delete;

    std::filesystem::path const& Path() const { return fPath; }
    std::string operator/(std::string const& name) const { return (fPath / name).string(); }

    // Makes a file of those bytes; its path.
    std::string Make(std::string const& name, std::string const& bytes) const {
        std::ofstream(fPath / name) << bytes;
        return *this / name;
    }

    // The names in the folder in alphabetical order, each with a blank behind it.
    std::string Names() const {
        std::set<std::string> names;
        for (auto const& entry : std::filesystem::directory_iterator(fPath)) {
            names.insert(entry.path().filename().string() + " ");
        }
        return std::accumulate(names.begin(), names.end(), std::string());
    }

private:
    std::filesystem::path fPath;
};

inline std::string ReadBytes(std::string const& path) {
    std::ifstream stream(path);
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

// Changes the time of a file; whether the file system has such a time.
inline bool SetTime(std::string const& path, timespec time) {
    timespec const times[] = {time, time};
    struct stat status {};
    return utimensat(AT_FDCWD, path.c_str(), times, 0) == 0 && stat(path.c_str(), &status) == 0 &&
           status.st_mtim.tv_sec == time.tv_sec && status.st_mtim.tv_nsec == time.tv_nsec;
}

// How many descriptors the process has open.
inline long CountDescriptors() {
    return std::distance(
        std::filesystem::directory_iterator("/proc/self/fd"),
        std::filesystem::directory_iterator());
}

} // namespace support
