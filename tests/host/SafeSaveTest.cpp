#include "pdfsettings/SafeSave.h"

#include "tests/support/ErrorOf.h"
#include "tests/support/SystemCallsDouble.h"
#include "tests/support/TemporaryFolder.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <tuple>
#include <unistd.h>

using namespace pdfsettings;
using support::CodeOf;
using support::MessageOf;
using support::ReadBytes;
using support::SystemCallsDouble;

namespace {

constexpr std::chrono::milliseconds kNoWaiting = std::chrono::milliseconds(0);

class SafeSaveTest : public testing::Test {
protected:
    ~SafeSaveTest() override { EXPECT_EQ(fDescriptors, support::CountDescriptors()); }

    // What a save says: its first warning, or why it fails; "" where nothing is wrong.
    static std::string Save(
        std::string const& path,
        std::string const& bytes = "new",
        std::chrono::milliseconds wait = kUsualWait) {
        SaveWarnings warnings;
        std::string const message = MessageOf([&] { warnings = SaveSafely(path, bytes, wait); });
        return warnings.empty() ? message : warnings.front();
    }

    std::string FirstName() const { return fFolder.Names().substr(0, fFolder.Names().find(' ')); }

    static std::string SaveByAnotherThread(std::string const& path) {
        std::string message;
        std::thread([&] { message = Save(path, "new", kNoWaiting); }).join();
        return message;
    }

    // A process that leaves an edit by an exception, as this one does not.
    static void Leave() {
        pid_t const leaving = fork();
        if (leaving == 0) {
            throw Error(Fault::kSystem, "the child leaves the edit");
        }
        waitpid(leaving, nullptr, 0);
    }

    // A process that has a copy of all descriptors until the other end of the pipe is closed.
    static void Stay(int const (&pipe)[2]) {
        if (fork() == 0) {
            close(pipe[1]);
            char byte = 0;
            static_cast<void>(read(pipe[0], &byte, 1));
            raise(SIGKILL);
        }
    }

    support::TemporaryFolder fFolder;
    long fDescriptors = support::CountDescriptors();
};

// Links on the way to a saved file.
class SaveLinksTest : public SafeSaveTest {
protected:
    void SetUp() override {
        if (geteuid() != 0) {
            GTEST_SKIP() << "only root can give files to another user";
        }
    }

    std::string Link(std::string const& name, std::string const& to) const {
        std::filesystem::create_symlink(to, fFolder / name);
        return fFolder / name;
    }

    void Give(std::string const& name) const {
        ASSERT_EQ(lchown((fFolder / name).c_str(), 12345, getgid()), 0);
    }

    static std::string Refusal(std::string const& link) {
        return "the link " + link + " is not followed: it belongs to another user than its target";
    }
};

} // namespace

TEST_F(SafeSaveTest, WritesIntoDescriptorsAndTheNullDevice) {
    EXPECT_EQ(Save("/dev/null", "gone"), "");
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
    EXPECT_EQ(LookAt("/dev/null"), std::nullopt);
    EXPECT_EQ(ReadFile("/dev/null"), "");
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    std::string const end = "/dev/fd/" + std::to_string(pipe[1]);
    std::filesystem::create_symlink(end, fFolder / "link");
    EXPECT_EQ(Save(end, "se"), "");
    EXPECT_EQ(Save(fFolder / "link", "nt"), "");
    close(pipe[1]);
    EXPECT_EQ(ReadFile("/proc/self/fd/" + std::to_string(pipe[0])), "sent");
    // Where a descriptor stands counts, and what it may do.
    int const log = open(fFolder.Make("log", "first,").c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    EXPECT_EQ(Save("/dev/fd/" + std::to_string(log), "second"), "");
    EXPECT_EQ(ReadBytes(fFolder / "log"), "first,second");
    EXPECT_EQ(
        MessageOf([&] { ReadFile("/dev/fd/" + std::to_string(log)); }), "Bad file descriptor");
    close(log);
    close(pipe[0]);
}

TEST_F(SafeSaveTest, LeavesTheFileWholeWhereItFails) {
    std::string const readOnly = fFolder.Make("readonly", "old");
    chmod(readOnly.c_str(), 0444);
    EXPECT_EQ(CodeOf([&] { SaveSafely(readOnly, "new"); }), Fault::kReadOnly);
    EXPECT_TRUE(IsReadOnly(readOnly));
    EXPECT_EQ(ReadBytes(readOnly), "old");
    std::string const big = fFolder.Make("big", "old");
    std::string const huge = fFolder.Make("huge", "");
    std::filesystem::resize_file(huge, (std::uintmax_t{256} << 20) + 1);
    ASSERT_EQ(mkfifo((fFolder / "pipe").c_str(), 0666), 0);
    std::pair<std::string, char const*> const kCases[] = {
        {fFolder.Path(), "Is a directory"},
        {fFolder / "big/", "Not a directory"},
        {fFolder / "big/a", "Not a directory"},
        {fFolder / "missing/a", "No such file or directory"},
        {fFolder / "missing/", "No such file or directory"},
        {"", "No such file or directory"},
        {fFolder / std::string(256, 'n'), "File name too long"},
        {readOnly + std::string("\0x", 2), "the path holds a NUL byte"},
        {huge, "larger than 256 MiB"},
        {fFolder / "pipe", "not a regular file"},
        {"/dev/full", "not a regular file"},
        {"/dev/fd/4294967296", "Bad file descriptor"},
    };
    for (auto const& [path, message] : kCases) {
        EXPECT_EQ(Save(path), message) << path;
        EXPECT_EQ(MessageOf([&, &file = path] { ReadFile(file); }), message) << path;
        EXPECT_FALSE(IsReadOnly(path)) << path;
    }

    {
        support::FileSizeLimit const limit(100);
        EXPECT_EQ(Save(big, std::string(1000, 'x')), "File too large");
    }
    EXPECT_EQ(ReadBytes(big), "old");
    EXPECT_EQ(fFolder.Names(), "big huge pipe readonly ");
}

TEST_F(SafeSaveTest, SaysWhichCallFailed) {
    constexpr char kLocalOnly[] =
        "it is on a network file system: programs on other machines are not locked out";
    constexpr char kUnlocked[] = "its folder cannot be locked: other programs are not locked out";
    constexpr char kUnread[] = "its folder may not be read: other programs are not locked out";
    std::string const file = fFolder.Make("a", "old");
    std::tuple<char const*, int, char const*> const kFailing[] = {
        {"faccessat", EACCES, "read-only: Permission denied"},
        {"faccessat", EROFS, "read-only: Read-only file system"},
        {"faccessat", EIO, "Input/output error"},
        {"write", ENOSPC, "No space left on device"},
        {"fsync", EIO, "Input/output error"},
        {"flock", EBADF, "Bad file descriptor"},
        {"flock", EIO, "Input/output error"},
        {"flock", ENOLCK, kUnlocked},
        {"folder", EACCES, kUnread},
    };
    for (auto const& [call, error, message] : kFailing) {
        fFolder.Make("a", "old");
        SystemCallsDouble calls;
        calls.FailNext(call, error);
        EXPECT_EQ(Save(file, "new"), message) << call;
        bool const isSaved = message == kUnlocked || message == kUnread;
        EXPECT_EQ(ReadBytes(file), isSaved ? "new" : "old") << call;
    }
    for (std::uint32_t const network : {0x6969U, 0xFF534D42U, 0x01021997U}) { // NFS, SMB, 9P
        SystemCallsDouble calls;
        calls.fFileSystem = network;
        EXPECT_EQ(Save(file, "new"), kLocalOnly);
        EXPECT_EQ(calls.Count("flock"), 2);
        EXPECT_EQ(calls.Count("lease"), 0);
    }
    // The bytes are on the disk before the name leads to them, and then the name is.
    SystemCallsDouble calls;
    calls.AfterEach([&calls](int /*call*/) {
        if (calls.Count("fsync") == 1) {
            calls.FailNext("fsync", EIO);
        }
    });
    EXPECT_EQ(
        Save(file, "new"), "its folder could not be flushed: a power failure may undo the save");
}

TEST_F(SafeSaveTest, WaitsForALeaseNoLongerThanItMay) {
    std::string const file = fFolder.Make("a", "old");
    int const leased = open(file.c_str(), O_RDWR | O_CLOEXEC);
    auto const handler = std::signal(SIGIO, SIG_IGN);
    std::function<void()> const kWays[] = {
        [&] { LookAt(file, kNoWaiting); },
        [&] { SaveSafely(file, "new", kNoWaiting); },
        [&] { FileLock const lock(file, kNoWaiting); },
    };
    for (auto const& way : kWays) {
        SystemCallsDouble const calls;
        if (fcntl(leased, F_SETLEASE, F_WRLCK) == 0) {
            EXPECT_EQ(
                MessageOf(way), "another program does not release its lease on it; try again");
            EXPECT_LT(calls.Count(), 40);
        }
    }
    close(leased);
    std::signal(SIGIO, handler);
    EXPECT_EQ(ReadBytes(file), "old");
}

TEST_F(SafeSaveTest, PutsNoOtherFileInPlaceThanTheOneThatItWrote) {
    std::string const file = fFolder.Make("a", "old");
    fFolder.Make("other", "other");
    SystemCallsDouble calls;
    calls.AfterEach([&](int /*call*/) {
        if (FirstName().starts_with(".joboptions-") && std::filesystem::exists(fFolder / "other")) {
            std::filesystem::rename(fFolder / "other", fFolder / FirstName());
        }
    });
    EXPECT_EQ(Save(file, "new"), "the new file was replaced");
    EXPECT_EQ(ReadBytes(file), "old");
}

TEST_F(SafeSaveTest, GoesOnWhereTheSystemLacksACallOrIsInterrupted) {
    constexpr bool kLasts = true;
    std::tuple<char const*, int, bool> const kFailing[] = {
        {"write", EINTR, !kLasts},
        {"pread", EINTR, !kLasts},
        {"syscall", EINTR, !kLasts},
        {"syscall", ENOSYS, kLasts},
        {"syscall", EPERM, kLasts},
        {"nameless", EOPNOTSUPP, kLasts},
        {"linkat", ENOENT, kLasts},
        {"exchange", EINVAL, kLasts},
        {"noreplace", EINVAL, kLasts},
        {"lease", EINVAL, kLasts},
        {"lease", EACCES, kLasts},
        {"flistxattr", EOPNOTSUPP, kLasts},
        {"fgetxattr", EOPNOTSUPP, kLasts},
        {"fremovexattr", EOPNOTSUPP, kLasts},
        {"faccessat", EINVAL, !kLasts},
    };
    std::string const file = fFolder / "a";
    for (auto const& [call, error, lasts] : kFailing) {
        SystemCallsDouble calls;
        for (char const* const bytes : {"made", "replaced", "replaced again"}) {
            lasts&& calls.HasFailed() ? calls.FailAlways(call, error) : calls.FailNext(call, error);
            EXPECT_EQ(Save(file, bytes), "") << call << error;
            EXPECT_EQ(ReadBytes(file), bytes) << call << error;
        }
        EXPECT_TRUE(calls.HasFailed()) << call << error;
        std::filesystem::remove(file);
    }
    // A name that is free is taken by a link, or by moving where there are no links.
    SystemCallsDouble calls;
    calls.FailAlways("noreplace", EINVAL);
    calls.FailAlways("linkat", EXDEV);
    EXPECT_EQ(Save(fFolder / "moved", "moved"), "");
    EXPECT_EQ(fFolder.Names(), "moved ");
}

TEST_F(SafeSaveTest, TheThreadOfALockUsesItAndOthersWait) {
    std::string const file = fFolder.Make("a", "old");
    std::string other;
    {
        FileLock lock(file);
        EXPECT_EQ(lock.Bytes(), "old");
        EXPECT_EQ(Save(fFolder / "b", "beside", kNoWaiting), "");
        lock.Save("new");
        lock.Save("newer");
        EXPECT_EQ(lock.Bytes(), "newer");
        other = SaveByAnotherThread(fFolder / "b");
    }
    EXPECT_EQ(other, "another program is changing files in its folder; try again");
    EXPECT_EQ(ReadBytes(file), "newer");
    EXPECT_EQ(ReadBytes(fFolder / "b"), "beside");
    EXPECT_EQ(Save(fFolder / "b", "late", kNoWaiting), "");

    {
        std::optional<FileLock> first(std::in_place, file);
        FileLock const second(file, std::chrono::milliseconds::max());
        first.reset();
        EXPECT_NE(SaveByAnotherThread(file), "") << "the second one still holds it";
    }
    FileLock lock(fFolder / "c");
    EXPECT_EQ(lock.Bytes(), std::nullopt);
    fFolder.Make("c", "foreign");
    EXPECT_EQ(CodeOf([&] { lock.Save("new"); }), Fault::kConflict);
    EXPECT_EQ(ReadBytes(fFolder / "c"), "foreign");
}

TEST_F(SafeSaveTest, WaitsForAWriterAndGivesUpInTime) {
    std::string const file = fFolder.Make("a", "old");
    int const writer = open(file.c_str(), O_WRONLY | O_CLOEXEC);
    EXPECT_EQ(Save(file, "new", kNoWaiting), "another program has it open for writing; try again");
    std::atomic<bool> isClosed = false;
    SystemCallsDouble calls;
    // As soon as the save has found the writer.
    calls.AfterEach([&](int) {
        if (!isClosed.exchange(true)) {
            close(writer);
        }
    });
    EXPECT_EQ(Save(file, "new"), "");
    EXPECT_EQ(ReadBytes(file), "new");
    EXPECT_EQ(fFolder.Names(), "a ");
}

TEST_F(SafeSaveTest, AChildNeitherKeepsNorEndsALock) {
    std::string const file = fFolder.Make("a", "old");
    pid_t const parent = getpid();
    int toChild[2] = {-1, -1};
    std::string other;
    EXPECT_EQ(::pipe(toChild), 0);
    try {
        FileLock const lock(file);
        Leave();
        other = SaveByAnotherThread(file);
        Stay(toChild);
    } catch (Error const&) {
        EXPECT_NE(getpid(), parent);
        raise(SIGKILL); // ends without what a program does at its end
    }
    EXPECT_NE(other, "") << "the child has ended the lock";
    EXPECT_EQ(Save(file, "new", kNoWaiting), "") << "the child has kept the lock";
    close(toChild[0]);
    close(toChild[1]);
    wait(nullptr);
}

TEST_F(SaveLinksTest, AreFollowedToTheirEnd) {
    fFolder.Make("target", "old");
    EXPECT_EQ(Save(Link("link", "target")), "");
    EXPECT_TRUE(std::filesystem::is_symlink(fFolder / "link"));
    EXPECT_EQ(ReadBytes(fFolder / "target"), "new");
    std::filesystem::create_directory(fFolder / "folder");
    Link("folder/first", "../made");
    EXPECT_EQ(Save(Link("second", "./folder//first")), "");
    EXPECT_TRUE(std::filesystem::is_symlink(fFolder / "folder/first"));
    EXPECT_EQ(ReadBytes(fFolder / "made"), "new");
    Link("absolute", fFolder / "folder");
    EXPECT_EQ(Save(fFolder / "absolute/../absolute/./inside"), "");
    EXPECT_EQ(ReadBytes(fFolder / "folder/inside"), "new");
    Link("link1", "target");
    for (int count = 2; count <= 41; ++count) {
        Link("link" + std::to_string(count), "link" + std::to_string(count - 1));
    }
    EXPECT_EQ(Save(fFolder / "link40"), "");
    EXPECT_EQ(Save(fFolder / "link41"), "Too many levels of symbolic links");
    EXPECT_EQ(Save(Link("loop", "loop")), "Too many levels of symbolic links");
    EXPECT_EQ(Save(Link("up", "..") + "/"), "Is a directory");
    EXPECT_EQ(Save(Link("nowhere", "missing/a")), "No such file or directory");
}

TEST_F(SaveLinksTest, OfOtherUsersAreFollowedOnlyToWhatIsTheirs) {
    for (std::string const folder : {"ours", "theirs"}) {
        std::filesystem::create_directory(fFolder / folder);
        fFolder.Make(folder + "/a", "old");
    }
    Give("theirs");
    Give("theirs/a");
    constexpr bool kTheirs = true;
    constexpr bool kFollowed = true;
    // The link, where it leads, what follows it in the path, and whose it is.
    std::tuple<char const*, char const*, char const*, bool, bool> const kCases[] = {
        {"1", "ours/a", "", kTheirs, !kFollowed},
        {"2", "theirs/a", "", kTheirs, kFollowed},
        {"3", "ours", "/a", kTheirs, !kFollowed},
        {"4", "theirs", "/a", kTheirs, kFollowed},
        {"5", "ours/missing", "", kTheirs, !kFollowed},
        {"6", "theirs/missing", "", kTheirs, kFollowed},
        // Ours in a folder of ours lead anywhere.
        {"7", "theirs/a", "", !kTheirs, kFollowed},
        {"8", "theirs", "/a", !kTheirs, kFollowed},
        // But not in a folder of theirs.
        {"theirs/9", "a", "", !kTheirs, !kFollowed},
        {"theirs/10", "../ours/a", "", !kTheirs, kFollowed},
    };
    for (auto const& [name, to, behind, isTheirs, isFollowed] : kCases) {
        std::string const link = Link(name, to);
        if (isTheirs) {
            Give(name);
        }
        EXPECT_EQ(Save(link + behind), isFollowed ? "" : Refusal(link)) << name;
    }
    // The way goes on through each link, whichever of them comes first.
    EXPECT_EQ(Save(Link("11", "1")), Refusal(fFolder / "1"));
    EXPECT_EQ(support::CodeOf([&] { LookAt(fFolder / "1"); }), Fault::kUntrusted);
}

TEST_F(SaveLinksTest, OfOursAreNotFollowedWhereOthersCouldHavePlacedThem) {
    fFolder.Make("theirs", "old");
    Give("theirs");
    for (mode_t const mode : {0775U, 0757U, 01777U}) {
        std::string const link = Link("in" + std::to_string(mode), fFolder / "theirs");
        chmod(fFolder.Path().c_str(), mode);
        EXPECT_EQ(Save(link), Refusal(link)) << mode;
    }
    chmod(fFolder.Path().c_str(), 0755);
    std::string const link = Link("named", fFolder / "theirs");
    EXPECT_EQ(Save(link), "");
    ASSERT_EQ(::link(link.c_str(), (fFolder / "twice").c_str()), 0);
    EXPECT_EQ(Save(link), Refusal(link)) << "a second name may be where they found it";
}
