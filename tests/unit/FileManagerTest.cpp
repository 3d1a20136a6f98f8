#include "platform/FileManager.h"

#include "tests/support/SystemCallsDouble.h"
#include "tests/support/TemporaryFolder.h"

#include <climits>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

int gLeased = -1;

class FileManager : public testing::Test {
protected:
    ~FileManager() override { EXPECT_EQ(fDescriptors, support::CountDescriptors()); }

    FSRef RefOf(std::string const& name) const { return {fFolder / name}; }

    // A fork of the file for reading and writing.
    static FSIORefNum Open(FSRef const& ref) {
        FSIORefNum fork = -1;
        EXPECT_EQ(noErr, FSOpenFork(&ref, 0, nullptr, fsRdWrPerm, &fork));
        return fork;
    }
    FSRef Folder() const { return {fFolder.Path().string()}; }

    static OSErr MakeRef(std::string const& path, FSRef* ref, Boolean* isDirectory) {
        return FSPathMakeRef(reinterpret_cast<UInt8 const*>(path.c_str()), ref, isDirectory);
    }

    mode_t ModeOf(std::string const& name) const {
        struct stat status {};
        stat((fFolder / name).c_str(), &status);
        return status.st_mode & 07777;
    }

    OSErr Create(std::u16string const& name, FSRef* ref = nullptr) const {
        FSRef const parent = Folder();
        auto const* const units = reinterpret_cast<UniChar const*>(name.data());
        return FSCreateFileUnicode(&parent, name.size(), units, 0, nullptr, ref, nullptr);
    }

    support::TemporaryFolder fFolder{support::OwnPlace()};
    long fDescriptors = support::CountDescriptors();
};

} // namespace

TEST_F(FileManager, TellsFromAPathWhatIsThere) {
    fFolder.Make("file", "");
    std::filesystem::create_symlink("nowhere", fFolder / "dangling");
    std::filesystem::create_symlink("file/below", fFolder / "through");
    struct {
        char const* fName;
        OSErr fError;
        bool fIsDirectory;
    } const kCases[] = {
        {"", noErr, true},
        {"file", noErr, false},
        {"dangling", noErr, false},
        {"through", noErr, false},
        {"missing", fnfErr, false},
        {"file/below", dirNFErr, false},
    };
    for (auto const& [name, error, isDirectory] : kCases) {
        FSRef ref{"unchanged"};
        Boolean found = 0;
        EXPECT_EQ(error, MakeRef(fFolder / name, &ref, &found)) << name;
        EXPECT_EQ(isDirectory ? 1 : 0, found) << name;
        EXPECT_EQ(error == noErr ? fFolder / name : "unchanged", ref.path) << name;
    }
    FSRef ref;
    EXPECT_EQ(bdNamErr, MakeRef(fFolder / std::string(256, 'n'), &ref, nullptr));
    EXPECT_EQ(bdNamErr, MakeRef(std::string(5000, 'n'), &ref, nullptr));
    support::SystemCallsDouble calls;
    calls.FailNext("statx", EACCES);
    EXPECT_EQ(afpAccessDenied, MakeRef(fFolder / "dangling", &ref, nullptr))
        << "whose end is hidden";
    UInt8 path[PATH_MAX];
    FSRef const eight{"/2345678"};
    EXPECT_EQ(bdNamErr, FSRefMakePath(&eight, path, 8));
    EXPECT_EQ(noErr, FSRefMakePath(&eight, path, 9));
    EXPECT_STREQ("/2345678", reinterpret_cast<char const*>(path));
    FSRef const relative{"a/b"};
    EXPECT_EQ(noErr, FSRefMakePath(&relative, path, sizeof path));
    EXPECT_EQ(std::filesystem::current_path() / "a/b", reinterpret_cast<char const*>(path));
}

TEST_F(FileManager, MakesWhatTheUmaskLeavesAndTakesItBack) {
    FSRef const parent = Folder();
    UniChar const folder = 'd';
    FSRef open;
    FSRef closed;
    mode_t const before = umask(0);
    EXPECT_EQ(noErr, Create(u"open", &open));
    EXPECT_EQ(
        noErr,
        FSCreateDirectoryUnicode(&parent, 1, &folder, 0, nullptr, nullptr, nullptr, nullptr));
    umask(0222);
    EXPECT_EQ(noErr, Create(u"closed", &closed));
    umask(before);
    EXPECT_EQ(0666U, ModeOf("open"));
    EXPECT_EQ(0755U, ModeOf("d")) << "for others to look into, not to change";
    EXPECT_EQ(0444U, ModeOf("closed"));
    FSRef const found = RefOf("closed");
    EXPECT_EQ(fLckdErr, FSDeleteObject(&found));
    EXPECT_EQ(noErr, FSDeleteObject(&closed));
    EXPECT_EQ("d open ", fFolder.Names());
}

TEST_F(FileManager, MakesNoFolderThatAnotherUserCouldExchange) {
    fFolder.Make("file", "");
    auto const make = [&](std::string const& parent, char16_t name) {
        FSRef const folder{fFolder / parent};
        auto const unit = static_cast<UniChar>(name);
        FSRef made;
        return FSCreateDirectoryUnicode(&folder, 1, &unit, 0, nullptr, &made, nullptr, nullptr);
    };
    struct {
        char const* fName;
        mode_t fMode;
        uid_t fOwner;
        bool fIsSafe; // for root; others have their own rights and no more
    } const kCases[] = {
        {"open", 0777, geteuid(), false},
        {"sticky", 01777, geteuid(), false},
        {"group", 0775, geteuid(), false},
        {"own", 0755, geteuid(), true},
        {"private", 0700, geteuid(), true},
        {"other", 0755, 12345, false},
    };
    bool const isRoot = geteuid() == 0;
    for (auto const& [name, mode, owner, isSafe] : kCases) {
        std::filesystem::create_directories(fFolder / name + "/below");
        chmod((fFolder / name).c_str(), mode);
        bool const isGiven = chown((fFolder / name).c_str(), owner, getgid()) == 0;
        OSErr const expected = isSafe || !isRoot ? noErr : afpAccessDenied;
        EXPECT_EQ(isGiven ? expected : noErr, make(name, 'd')) << name;
        EXPECT_EQ(isGiven ? expected : noErr, make(std::string(name) + "/below", 'd')) << name;
    }
    // A way through a link counts as what it leads to.
    std::filesystem::create_directory_symlink("open", fFolder / "link");
    EXPECT_EQ(isRoot ? afpAccessDenied : noErr, make("link", 'e'));
    std::filesystem::create_directory(fFolder / "target");
    std::filesystem::create_directory_symlink(fFolder / "target", fFolder / "other/planted");
    std::filesystem::create_directory_symlink(fFolder / "target", fFolder / "ours");
    EXPECT_EQ(isRoot ? afpAccessDenied : noErr, make("other/planted", 'e'));
    EXPECT_EQ(noErr, make("ours", 'f'));
    EXPECT_EQ(dupFNErr, make("own", 'd'));
    support::SystemCallsDouble calls;
    calls.fHasRaisedRights = true;
    EXPECT_EQ(afpAccessDenied, make("own", 'e'));
    calls.fHasRaisedRights = false;
    EXPECT_EQ(noErr, make("own", 'e'));
}

// The file may be exchanged by whoever may write to its folder.
TEST_F(FileManager, WritesAndTakesBackTheVeryFileThatItMade) {
    FSRef made;
    ASSERT_EQ(noErr, Create(u"a", &made));
    std::filesystem::rename(fFolder / "a", fFolder / "moved");
    fFolder.Make("a", "other");
    FSIORefNum const fork = Open(made);
    EXPECT_EQ(noErr, FSWriteFork(fork, fsFromLEOF, 0, 3, "new", nullptr));
    EXPECT_EQ(noErr, FSCloseFork(fork));
    EXPECT_EQ("new", support::ReadBytes(fFolder / "moved"));
    EXPECT_EQ(fnfErr, FSDeleteObject(&made));
    EXPECT_EQ("other", support::ReadBytes(fFolder / "a"));
    std::filesystem::rename(fFolder / "moved", fFolder / "a");
    EXPECT_EQ(noErr, FSDeleteObject(&made));
    EXPECT_EQ("", fFolder.Names());
}

TEST_F(FileManager, TakesImmutableFilesForLocked) {
    std::string const file = fFolder.Make("file", "");
    int const descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
    int flags = FS_IMMUTABLE_FL;
    bool const isImmutable = ioctl(descriptor, FS_IOC_SETFLAGS, &flags) == 0;
    FSRef const ref{file};
    FSCatalogInfo info{};
    EXPECT_EQ(noErr, FSGetCatalogInfo(&ref, kFSCatInfoNodeFlags, &info, nullptr, nullptr, nullptr));
    EXPECT_EQ(isImmutable ? kFSNodeLockedMask : 0, info.nodeFlags);
    EXPECT_EQ(isImmutable ? fLckdErr : noErr, FSDeleteObject(&ref));
    flags = 0;
    ioctl(descriptor, FS_IOC_SETFLAGS, &flags);
    close(descriptor);
    EXPECT_EQ(paramErr, FSGetCatalogInfo(&ref, 0, &info, nullptr, &info, nullptr));
}

TEST_F(FileManager, MovesAllBytesOrFails) {
    fFolder.Make("file", "0123456789");
    FSRef const ref = RefOf("file");
    FSIORefNum fork = -1;
    EXPECT_EQ(paramErr, FSOpenFork(&ref, 0, nullptr, 2, &fork));
    EXPECT_EQ(paramErr, FSOpenFork(&ref, 1, nullptr, fsRdPerm, &fork));
    FSRef const folder = Folder();
    EXPECT_EQ(ioErr, FSOpenFork(&folder, 0, nullptr, fsRdPerm, &fork));
    fork = Open(ref);
    SInt64 size = 0;
    EXPECT_EQ(noErr, FSGetForkSize(fork, &size));
    EXPECT_EQ(10, size);
    char bytes[20] = {};
    ByteCount count = 0;
    EXPECT_EQ(noErr, FSReadFork(fork, fsFromStart, 2, 8, bytes, &count));
    EXPECT_STREQ("23456789", bytes);
    EXPECT_EQ(ioErr, FSReadFork(fork, fsFromStart, 2, 9, bytes, &count));
    EXPECT_EQ(8U, count);
    EXPECT_EQ(noErr, FSReadFork(fork, fsFromLEOF, 0, 0, nullptr, nullptr));
    EXPECT_EQ(noErr, FSReadFork(fork, fsFromLEOF, -1, 1, bytes, &count));
    EXPECT_EQ('9', bytes[0]);
    support::SystemCallsDouble calls;
    calls.fMostMoved = 2;
    calls.FailNext("write", EINTR);
    calls.FailNext("read", EINTR);
    EXPECT_EQ(noErr, FSWriteFork(fork, fsFromLEOF, 0, 3, "abc", &count));
    EXPECT_EQ(3U, count);
    EXPECT_EQ(noErr, FSReadFork(fork, fsFromStart, 8, 5, bytes, &count));
    EXPECT_EQ("89abc", std::string(bytes, 5));
    EXPECT_EQ(FD_CLOEXEC, fcntl(fork, F_GETFD));
    EXPECT_EQ(paramErr, FSSetForkPosition(fork, 7, 0));
    EXPECT_EQ(paramErr, FSSetForkPosition(fork, fsFromStart, -1));
    EXPECT_EQ(noErr, FSCloseFork(fork));
    EXPECT_EQ("0123456789abc", support::ReadBytes(fFolder / "file"));
    EXPECT_EQ(paramErr, FSGetForkSize(-1, &size));
    EXPECT_EQ(paramErr, FSReadFork(-1, fsFromStart, 0, 1, bytes, &count));
    EXPECT_EQ(paramErr, FSCloseFork(-1));
}

TEST_F(FileManager, FindsTheDiskFullWhereAFileMayNotGrowAndKeepsTheHostsSignals) {
    FSRef const ref{fFolder.Make("file", "0123456789")};
    FSIORefNum const fork = Open(ref);
    {
        support::FileSizeLimit const limit(10);
        EXPECT_EQ(dskFulErr, FSWriteFork(fork, fsFromLEOF, 0, 3, "abc", nullptr));
    }
    EXPECT_EQ(noErr, FSCloseFork(fork));
    sigset_t blocked;
    EXPECT_EQ(0, pthread_sigmask(SIG_SETMASK, nullptr, &blocked));
    EXPECT_EQ(0, sigismember(&blocked, SIGXFSZ));
}

// A file server may hold a lease on a file that its clients have open.
TEST_F(FileManager, WaitsForTheHolderOfALease) {
    gLeased = open(fFolder.Make("file", "").c_str(), O_RDWR | O_CLOEXEC);
    auto const handler = std::signal(SIGIO, [](int) { fcntl(gLeased, F_SETLEASE, F_UNLCK); });
    bool const hasLeases = fcntl(gLeased, F_SETLEASE, F_WRLCK) == 0;
    FSRef const ref = RefOf("file");
    FSIORefNum fork = -1;
    EXPECT_EQ(noErr, FSOpenFork(&ref, 0, nullptr, fsRdPerm, &fork));
    EXPECT_EQ(noErr, FSCloseFork(fork));
    close(gLeased);
    std::signal(SIGIO, handler);
    if (!hasLeases) {
        GTEST_SKIP() << "no leases on this file system";
    }
}
