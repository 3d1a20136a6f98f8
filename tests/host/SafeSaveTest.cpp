#include "host/SafeSave.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace pdfsettings;
namespace fs = std::filesystem;

namespace {

// Works in a folder of its own, which goes again.
class SafeSaveTest : public testing::Test {
protected:
    SafeSaveTest() {
        std::string name = (fs::temp_directory_path() / "safesave-XXXXXX").string();
        fFolder = mkdtemp(name.data());
    }
    ~SafeSaveTest() override { fs::remove_all(fFolder); }

    static std::string Read(fs::path const& path) {
        std::ifstream stream(path);
        return std::string(std::istreambuf_iterator<char>(stream), {});
    }

    void Make(fs::path const& path, mode_t mode) const {
        std::ofstream(path) << "old";
        chmod(path.c_str(), mode);
    }

    static mode_t ModeOf(fs::path const& path) {
        struct stat status {};
        stat(path.c_str(), &status);
        return status.st_mode & 07777;
    }

    std::size_t CountFiles() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(fFolder), fs::directory_iterator()));
    }

    // What a save says: "" when it goes through.
    static std::string Save(fs::path const& path, std::string const& bytes) {
        try {
            SaveSafely(path.string(), bytes);
            return "";
        } catch (Error const& error) {
            return error.what();
        }
    }

    fs::path fFolder;
};

} // namespace

TEST_F(SafeSaveTest, MakesAFileAndReplacesOneWithItsMode) {
    fs::path const file = fFolder / "a";
    EXPECT_EQ(Save(file, "first"), "");
    EXPECT_EQ(Read(file), "first");
    chmod(file.c_str(), 0640);
    EXPECT_EQ(Save(file, ""), "");
    EXPECT_EQ(Read(file), "");
    EXPECT_EQ(ModeOf(file), 0640u);
    EXPECT_EQ(CountFiles(), 1u);
}

TEST_F(SafeSaveTest, WritesThroughALinkAndIntoADevice) {
    Make(fFolder / "target", 0644);
    fs::create_symlink("target", fFolder / "link");
    EXPECT_EQ(Save(fFolder / "link", "new"), "");
    EXPECT_TRUE(fs::is_symlink(fFolder / "link"));
    EXPECT_EQ(Read(fFolder / "target"), "new");
    EXPECT_EQ(Save("/dev/null", "gone"), "");
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(SafeSaveTest, LeavesTheFileWholeWhereItFails) {
    Make(fFolder / "readonly", 0444);
    EXPECT_THROW(SaveSafely((fFolder / "readonly").string(), "new"), ReadOnlyError);
    EXPECT_EQ(Read(fFolder / "readonly"), "old");
    EXPECT_EQ(Save(fFolder, "new"), "Is a directory");
    EXPECT_EQ(Save(fFolder / "missing" / "a", "new"), "No such file or directory");
    EXPECT_EQ(Save("/dev/full", "new"), "No space left on device");

    Make(fFolder / "big", 0644);
    auto const handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    rlimit const limit{100, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
    std::string const message = Save(fFolder / "big", std::string(1000, 'x'));
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(message, "File too large");
    EXPECT_EQ(Read(fFolder / "big"), "old");
    EXPECT_EQ(CountFiles(), 2u);
}
