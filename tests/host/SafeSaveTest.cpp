#include "pdfsettings/SafeSave.h"

#include "tests/host/SystemCallsDouble.h"
#include "tests/support/TemporaryFolder.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
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

    // Saves in a process of its own that is killed after the nth call. False when the save was over
    // before.
    static bool SaveAndDie(std::string const& path, std::string const& bytes, int n, bool isNamed) {
        pid_t const child = fork();
        if (child == 0) {
            support::SystemCallsDouble calls;
            if (isNamed) {
                calls.RefuseNamelessFiles();
            }
            calls.KillAfter(n);
            _exit(Save(path, bytes).empty() ? 0 : 1);
        }
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status) || status == 0);
        return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    }

    // Whether a killed save left its new file behind, which then must be whole.
    static bool HasLeftover(support::TemporaryFolder const& folder, std::string const& bytes) {
        std::string const names = folder.Names();
        if (names == "a " || names.empty()) {
            return false;
        }
        EXPECT_EQ(names.substr(0, 12), ".joboptions-");
        EXPECT_EQ(support::ReadBytes(folder / names.substr(0, names.find(' '))), bytes);
        return true;
    }

    // Saves in a process that is killed, then saves again; false when the first save was over.
    bool HoldsWhereKilled(std::string const& original, int n) {
        support::TemporaryFolder const folder;
        std::string const file = original.empty() ? folder / "a" : folder.Make("a", original);
        if (!SaveAndDie(file, "new", n, /*isNamed=*/false)) {
            return false;
        }
        std::string const left = support::ReadBytes(file);
        EXPECT_TRUE(left == "new" || left == original) << n << left;
        fLeftovers += HasLeftover(folder, "new") ? 1 : 0;
        EXPECT_EQ(Save(file, "newer"), "");
        EXPECT_EQ(support::ReadBytes(file), "newer");
        EXPECT_EQ(folder.Names(), "a ");
        return true;
    }

    // Saves while the nth call fails; false when there are fewer. An empty original is no file.
    static bool HoldsWhereACallFails(std::string const& original, int n, bool isNamed) {
        support::TemporaryFolder const folder;
        std::string const file = original.empty() ? folder / "a" : folder.Make("a", original);
        std::string message;
        bool hasFailed = false;
        {
            support::SystemCallsDouble calls;
            if (isNamed) {
                calls.RefuseNamelessFiles();
            }
            calls.FailAt(n, EIO);
            message = Save(file, "new");
            hasFailed = calls.HasFailed();
        }
        EXPECT_TRUE(message.empty() || message == "Input/output error") << n << message;
        EXPECT_EQ(support::ReadBytes(file), message.empty() ? "new" : original) << n;
        EXPECT_EQ(folder.Names(), message.empty() || !original.empty() ? "a " : "") << n;
        return hasFailed;
    }

    int fLeftovers = 0;
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

    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    rlimit const limit{100, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
    std::string const message = Save(big, std::string(1000, 'x'));
    setrlimit(RLIMIT_FSIZE, &before);

    EXPECT_EQ(message, "File too large");
    EXPECT_EQ(support::ReadBytes(big), "old");
    EXPECT_EQ(fFolder.Names(), "big readonly ");
}

TEST_F(SafeSaveTest, KilledAfterAnyCallLeavesOldOrNewBytesAndNothingElse) {
    int kills = 0;
    for (std::string const original : {"old", ""}) {
        for (int n = 1; HoldsWhereKilled(original, n); ++n) {
            ++kills;
        }
    }
    EXPECT_GE(kills, 15);
    // Between its name and its move.
    EXPECT_EQ(fLeftovers, 1);
}

TEST_F(SafeSaveTest, KilledWhereAllFilesHaveNamesLeavesOldOrNewBytes) {
    int kills = 0;
    for (; SaveAndDie(fFolder.Make("a", "old"), "new", kills + 1, /*isNamed=*/true); ++kills) {
        std::string const left = support::ReadBytes(fFolder / "a");
        EXPECT_TRUE(left == "new" || left == "old") << kills << left;
    }
    EXPECT_GE(kills, 8);
    EXPECT_EQ(support::ReadBytes(fFolder / "a"), "new");
}

TEST_F(SafeSaveTest, EveryFailingCallGivesTheOldBytesWithAReasonOrTheNewOnes) {
    int failures = 0;
    for (auto const& [original, isNamed] :
         {std::pair("old", false),
          std::pair("old", true),
          std::pair("", false),
          std::pair("", true)}) {
        for (int n = 1; HoldsWhereACallFails(original, n, isNamed); ++n) {
            ++failures;
        }
    }
    EXPECT_GE(failures, 30);
}

TEST_F(SafeSaveTest, GoesOnWhereACallIsInterruptedOrAnotherSaverTookItsName) {
    std::string const file = fFolder.Make("a", "old");
    for (auto const& [call, error] :
         {std::pair("write", EINTR), std::pair("rename", ENOENT), std::pair("linkat", EXDEV)}) {
        support::SystemCallsDouble calls;
        calls.FailNext(call, error);
        EXPECT_EQ(Save(file, call), "");
        EXPECT_TRUE(calls.HasFailed()) << call;
        EXPECT_EQ(support::ReadBytes(file), call);
    }
    EXPECT_EQ(fFolder.Names(), "a ");
}
