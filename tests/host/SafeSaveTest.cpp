#include "host/SafeSave.h"

#include "tests/support/TemporaryFolder.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace pdfsettings;

namespace {

class SafeSaveTest : public testing::Test {
protected:
    // What a save says: "" when it goes through.
    static std::string Save(std::string const& path, std::string const& bytes) {
        try {
            SaveSafely(path, bytes);
            return "";
        } catch (Error const& error) {
            return error.what();
        }
    }

    static mode_t ModeOf(std::string const& path) {
        struct stat status {};
        stat(path.c_str(), &status);
        return status.st_mode & 07777;
    }

    support::TemporaryFolder fFolder;
};

} // namespace

TEST_F(SafeSaveTest, MakesAFileAndReplacesOneWithItsMode) {
    std::string const file = fFolder / "a";
    EXPECT_EQ(Save(file, "first"), "");
    EXPECT_EQ(support::ReadBytes(file), "first");
    chmod(file.c_str(), 0640);
    EXPECT_EQ(Save(file, ""), "");
    EXPECT_EQ(support::ReadBytes(file), "");
    EXPECT_EQ(ModeOf(file), 0640u);
    EXPECT_EQ(fFolder.Names(), "a ");
}

TEST_F(SafeSaveTest, WritesThroughALinkAndIntoADevice) {
    fFolder.Make("target", "old");
    std::filesystem::create_symlink("target", fFolder / "link");
    EXPECT_EQ(Save(fFolder / "link", "new"), "");
    EXPECT_TRUE(std::filesystem::is_symlink(fFolder / "link"));
    EXPECT_EQ(support::ReadBytes(fFolder / "target"), "new");
    std::filesystem::create_directory(fFolder / "folder");
    std::filesystem::create_symlink("../made", fFolder / "folder/first");
    std::filesystem::create_symlink("folder/first", fFolder / "second");
    EXPECT_EQ(Save(fFolder / "second", "made"), "");
    EXPECT_TRUE(std::filesystem::is_symlink(fFolder / "folder/first"));
    EXPECT_EQ(support::ReadBytes(fFolder / "made"), "made");
    std::filesystem::create_symlink("loop", fFolder / "loop");
    EXPECT_EQ(Save(fFolder / "loop", "new"), "Too many levels of symbolic links");
    EXPECT_EQ(Save("/dev/null", "gone"), "");
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    EXPECT_EQ(Save("/dev/fd/" + std::to_string(pipe[1]), "sent"), "");
    char sent[5] = "";
    EXPECT_EQ(read(pipe[0], sent, 4), 4);
    EXPECT_STREQ(sent, "sent");
    close(pipe[0]);
    close(pipe[1]);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST_F(SafeSaveTest, LeavesTheFileWholeWhereItFails) {
    std::string const readOnly = fFolder.Make("readonly", "old");
    chmod(readOnly.c_str(), 0444);
    EXPECT_THROW(SaveSafely(readOnly, "new"), ReadOnlyError);
    EXPECT_EQ(support::ReadBytes(readOnly), "old");
    EXPECT_EQ(Save(fFolder.Path(), "new"), "Is a directory");
    EXPECT_EQ(Save(fFolder / "missing/a", "new"), "No such file or directory");
    EXPECT_EQ(Save("/dev/full", "new"), "No space left on device");
    EXPECT_EQ(Save(readOnly + std::string("\0x", 2), "new"), "the path holds a NUL byte");

    std::string const big = fFolder.Make("big", "old");
    auto const handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    rlimit const limit{100, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
    std::string const message = Save(big, std::string(1000, 'x'));
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(message, "File too large");
    EXPECT_EQ(support::ReadBytes(big), "old");
    EXPECT_EQ(fFolder.Names(), "big readonly ");
}
