#include "pdfsettings/SafeSave.h"

#include "tests/host/SystemCallsDouble.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/TemporaryFolder.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
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
        std::string const& bytes,
        std::chrono::milliseconds wait = kUsualWait) {
        SaveWarnings warnings;
        std::string const message = MessageOf([&] { warnings = SaveSafely(path, bytes, wait); });
        return warnings.empty() ? message : warnings.front();
    }

    // Makes a file and replaces it while a call fails, once each time or always.
    void ExpectSaved(char const* call, int error, bool isAlways) const {
        std::string const file = fFolder / "a";
        SystemCallsDouble calls;
        for (char const* const bytes : {"made", "replaced"}) {
            isAlways ? calls.FailAlways(call, error) : calls.FailNext(call, error);
            EXPECT_EQ(Save(file, bytes), "") << call << error;
            EXPECT_EQ(ReadBytes(file), bytes) << call << error;
        }
        EXPECT_TRUE(calls.HasFailed()) << call << error;
        std::filesystem::remove(file);
    }

    std::string FirstName() const { return fFolder.Names().substr(0, fFolder.Names().find(' ')); }

    // Right after an exchange: opens the new file for writing and changes the old one, as another
    // program who was done with it would have.
    int Disturb(std::string const& file) const {
        fFolder.Make(FirstName(), "OLD");
        return open(file.c_str(), O_WRONLY | O_CLOEXEC);
    }

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

} // namespace

TEST_F(SafeSaveTest, WritesIntoDescriptorsAndTheNullDeviceAndIntoNothingElseThatIsNoFile) {
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
    EXPECT_EQ(MessageOf([&] { ReadFile("/dev/fd/4294967296"); }), "Bad file descriptor");
    ASSERT_EQ(mkfifo((fFolder / "pipe").c_str(), 0666), 0);
    for (std::string const& path : {fFolder / "pipe", std::string("/dev/full")}) {
        EXPECT_EQ(Save(path, "new"), "not a regular file") << path;
        EXPECT_EQ(MessageOf([&] { ReadFile(path); }), "not a regular file") << path;
        EXPECT_EQ(MessageOf([&] { LookAt(path); }), "not a regular file") << path;
    }
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
    struct {
        std::string fPath;
        char const* fMessage;
    } const kCases[] = {
        {fFolder.Path(), "Is a directory"},
        {fFolder / "big/", "Not a directory"},
        {fFolder / "big/a", "Not a directory"},
        {fFolder / "missing/a", "No such file or directory"},
        {fFolder / "missing/", "No such file or directory"},
        {"", "No such file or directory"},
        {fFolder / std::string(256, 'n'), "File name too long"},
        {readOnly + std::string("\0x", 2), "the path holds a NUL byte"},
        {huge, "larger than 256 MiB"},
    };
    for (auto const& [path, message] : kCases) {
        EXPECT_EQ(Save(path, "new"), message) << path;
        EXPECT_EQ(MessageOf([&, &file = path] { ReadFile(file); }), message) << path;
        EXPECT_FALSE(IsReadOnly(path)) << path;
    }

    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    rlimit const limit{100, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
    std::string const message = Save(big, std::string(1000, 'x'));
    setrlimit(RLIMIT_FSIZE, &before);

    EXPECT_EQ(message, "File too large");
    EXPECT_EQ(ReadBytes(big), "old");
    EXPECT_EQ(fFolder.Names(), "big huge readonly ");
}

TEST_F(SafeSaveTest, SaysWhichCallFailed) {
    struct {
        char const* fCall;
        int fError;
        char const* fMessage;
        bool fIsSaved = false;
    } const kCases[] = {
        {"faccessat", EACCES, "read-only: Permission denied"},
        {"faccessat", EROFS, "read-only: Read-only file system"},
        {"faccessat", EIO, "Input/output error"},
        {"write", ENOSPC, "No space left on device"},
        {"fsync", EIO, "Input/output error"},
        {"flock", EBADF, "Bad file descriptor"},
        {"flock", EIO, "Input/output error"},
        {"flock", ENOLCK, "its folder cannot be locked: other programs are not locked out", true},
        {"folder", EACCES, "its folder may not be read: other programs are not locked out", true},
    };
    for (auto const& [call, error, message, isSaved] : kCases) {
        std::string const file = fFolder.Make("a", "old");
        SystemCallsDouble calls;
        calls.FailNext(call, error);
        EXPECT_EQ(Save(file, "new"), message) << call;
        EXPECT_EQ(ReadBytes(file), isSaved ? "new" : "old") << call;
    }
    // The bytes are on the disk before the name leads to them, and then the name is.
    SystemCallsDouble calls;
    calls.AfterEach([&calls](int /*call*/) {
        if (calls.Count("fsync") == 1) {
            calls.FailNext("fsync", EIO);
        }
    });
    EXPECT_EQ(
        Save(fFolder / "a", "new"),
        "its folder could not be flushed: a power failure may undo the save");
}

TEST_F(SafeSaveTest, ExpectsNoLeasesOnANetwork) {
    std::string const file = fFolder.Make("a", "old");
    for (long const kind : {0x6969L, 0xFF534D42L, 0x01021997L}) { // NFS, SMB, 9P
        SystemCallsDouble calls;
        calls.SetFileSystem(kind);
        EXPECT_EQ(
            Save(file, "new"),
            "it is on a network file system: programs on other machines are not locked out");
        EXPECT_EQ(calls.Count("flock"), 2);
        EXPECT_EQ(calls.Count("lease"), 0);
    }
}

TEST_F(SafeSaveTest, WaitsForALeaseNoLongerThanItMay) {
    std::string const file = fFolder.Make("a", "old");
    int const leased = open(file.c_str(), O_RDWR | O_CLOEXEC);
    auto const handler = std::signal(SIGIO, SIG_IGN);
    auto const expectEndOf = [](std::function<void()> const& way) {
        SystemCallsDouble const calls;
        EXPECT_EQ(MessageOf(way), "another program does not release its lease on it; try again");
        EXPECT_LT(calls.Count(), 40);
    };
    if (fcntl(leased, F_SETLEASE, F_WRLCK) == 0) {
        expectEndOf([&] { LookAt(file, kNoWaiting); });
        expectEndOf([&] { SaveSafely(file, "new", kNoWaiting); });
        expectEndOf([&] { FileLock const lock(file, kNoWaiting); });
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

TEST_F(SafeSaveTest, ReplacesOnlyWhatWasSeen) {
    std::string const file = fFolder / "a";
    auto const absent = LookAt(file);
    fFolder.Make("a", "");
    EXPECT_EQ(CodeOf([&] { SaveSafely(file, "new", absent); }), Fault::kConflict);
    EXPECT_EQ(MessageOf([&] { SaveSafely(file, "new", LookAt(file)); }), "");
    std::filesystem::remove(file);
    EXPECT_EQ(CodeOf([&] { SaveSafely(file, "newer", "new"); }), Fault::kConflict);
    EXPECT_EQ(fFolder.Names(), "");
}

TEST_F(SafeSaveTest, GoesOnWhereTheSystemLacksACallOrIsInterrupted) {
    std::pair<char const*, int> const kCases[] = {
        {"write", EINTR},
        {"pread", EINTR},
        {"syscall", EINTR},
        {"syscall", ENOSYS},
        {"syscall", EPERM},
        {"nameless", EOPNOTSUPP},
        {"linkat", ENOENT},
        {"exchange", EINVAL},
        {"noreplace", EINVAL},
        {"lease", EINVAL},
        {"lease", EACCES},
        {"flistxattr", EOPNOTSUPP},
        {"fgetxattr", EOPNOTSUPP},
        {"fremovexattr", EOPNOTSUPP},
        {"faccessat", EINVAL},
    };
    for (auto const& [call, error] : kCases) {
        bool const isOnce = error == EINTR || call == std::string_view("faccessat");
        ExpectSaved(call, error, /*isAlways=*/false);
        ExpectSaved(call, error, !isOnce);
    }
}

TEST_F(SafeSaveTest, TakesANameThatIsFreeByALinkOrByMoving) {
    SystemCallsDouble calls;
    calls.FailAlways("noreplace", EINVAL);
    calls.FailNext("linkat", EXDEV); // from now on files have names from the start
    EXPECT_EQ(Save(fFolder / "linked", "linked"), "");
    calls.FailAlways("linkat", EPERM);
    EXPECT_EQ(Save(fFolder / "moved", "moved"), "");
    EXPECT_EQ(fFolder.Names(), "linked moved ");
}

TEST_F(SafeSaveTest, LocksAreHadOneAfterTheOther) {
    std::string const file = fFolder.Make("a", "0");
    auto const addOften = [&] {
        for (int round = 0; round < 25; ++round) {
            FileLock lock(file, std::chrono::minutes(2));
            lock.Save(std::to_string(std::stoi(*lock.Bytes()) + 1));
        }
    };
    {
        std::jthread const threads[] = {
            std::jthread(addOften), std::jthread(addOften), std::jthread(addOften)};
        addOften();
    }
    EXPECT_EQ(ReadBytes(file), "100");
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
    ASSERT_EQ(write(writer, "OLD", 3), 3);
    EXPECT_EQ(ReadBytes(file), "OLD");
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

TEST_F(SafeSaveTest, KeepsANewFileThatSomebodyBeganToWriteBeforeItWasTakenBack) {
    std::string const file = fFolder.Make("a", "old");
    int writer = -1;
    std::optional<SystemCallsDouble> calls(std::in_place);
    calls->AfterEach([&](int) {
        writer = calls->Count("exchange") == 1 && writer < 0 ? Disturb(file) : writer;
    });
    std::string const message = Save(file, "new");
    calls.reset();
    EXPECT_EQ(write(writer, "NEW", 3), 3);
    close(writer);
    std::string const kept = FirstName();
    EXPECT_EQ(
        message,
        "changed since it was read, and again meanwhile: its old content is kept as " + kept +
            " in its folder");
    EXPECT_EQ(ReadBytes(file), "OLD");
    EXPECT_EQ(ReadBytes(fFolder / kept), "NEW");
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

TEST_F(SafeSaveTest, DeletesWhatWasLeftBehindOnlyIfNothingIsLost) {
    std::string const file = fFolder.Make("a", "old");
    std::string const left = ".joboptions-0123456789abcdef0123456789abcdef.new";
    std::string const other = ".joboptions-0123456789abcdef.new";
    std::string const warning = "an interrupted save left " + left +
                                " in its folder; delete it if you do not need its content";
    fFolder.Make(other, "new");
    fFolder.Make(left, "new");
    {
        // As long as the save has not succeeded, these may be the only copy of its bytes.
        SystemCallsDouble calls;
        calls.FailAlways("write", ENOSPC);
        EXPECT_EQ(Save(file, "new"), "No space left on device");
        EXPECT_EQ(ReadBytes(fFolder / left), "new");
    }
    // One that has it open may still write.
    int const writer = open((fFolder / left).c_str(), O_WRONLY | O_CLOEXEC);
    EXPECT_EQ(Save(file, "new"), warning);
    close(writer);
    fFolder.Make(left, "else");
    EXPECT_EQ(Save(file, "new"), warning);
    fFolder.Make(left, "new");
    EXPECT_EQ(Save(file, "new"), "");
    EXPECT_EQ(fFolder.Names(), other + " a ");
}
