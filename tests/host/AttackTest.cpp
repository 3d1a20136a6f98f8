// Another user exchanges what lies in folders that he may write to, while root saves there.
#include "host/detail/Bindings.h"
#include "pdfsettings/SafeSave.h"
#include "pdfsettings/Settings.h"
#include "pdfsettings/SettingsList.h"
#include "pdfsettings/raw/RawAccess.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/Rounds.h"
#include "tests/support/TemporaryFolder.h"

#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <grp.h>
#include <gtest/gtest.h>
#include <set>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace pdfsettings;
using support::ReadBytes;

namespace {

constexpr uid_t kAttacker = 12345;
constexpr std::chrono::milliseconds kShortWait = std::chrono::milliseconds(20);

// Does the same again and again as another user, until it is destroyed.
class Attacker {
public:
    explicit Attacker(std::function<void()> const& act) : fProcess(fork()) {
        if (fProcess == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            bool const isOther = setgroups(0, nullptr) == 0 &&
                                 setresgid(kAttacker, kAttacker, kAttacker) == 0 &&
                                 setresuid(kAttacker, kAttacker, kAttacker) == 0;
            if (!isOther) {
                _exit(1);
            }
            for (;;) {
                act();
            }
        }
    }
    ~Attacker() {
        kill(fProcess, SIGKILL);
        int status = 0;
        waitpid(fProcess, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status)) << "it did not become another user";
    }
    Attacker(Attacker const&) = delete;
    Attacker& operator=(Attacker const&) = delete;

private:
    pid_t fProcess;
};

class AttackTest : public testing::Test {
protected:
    void SetUp() override {
        if (geteuid() != 0) {
            GTEST_SKIP() << "only root can make an attacker of another user";
        }
        umask(022);
        chmod(fFolder.Path().c_str(), 0755);
        std::filesystem::create_directory(fFolder / "roots");
        fFolder.Make("roots/a", "root's");
        chmod(fRootsFile.c_str(), 0644);
    }

    // A folder that everybody may write to, and a file of the attacker in it.
    void MakeFolder(std::string const& name, mode_t mode, uid_t owner) const {
        std::filesystem::create_directory(fFolder / name);
        fFolder.Make(name + "/a", "old");
        chmod((fFolder / name).c_str(), mode);
        chmod((fFolder / name + "/a").c_str(), 0666);
        ASSERT_EQ(chown((fFolder / name).c_str(), owner, owner), 0);
        ASSERT_EQ(chown((fFolder / name + "/a").c_str(), kAttacker, kAttacker), 0);
    }

    // Whether root's file is as it was, and alone.
    bool IsSafe() const {
        struct stat status {};
        return lstat(fRootsFile.c_str(), &status) == 0 && status.st_uid == 0 &&
               status.st_gid == 0 && status.st_mode == (S_IFREG | 0644) &&
               ReadBytes(fRootsFile) == "root's" &&
               std::distance(begin(std::filesystem::directory_iterator(fRoots)), {}) == 1;
    }

    // Attacks each of many saves.
    void Survive(std::function<void()> const& act, std::function<void()> const& save) const {
        Attacker const attacker(act);
        for (int round = 0; round < support::Rounds(300) && !testing::Test::HasFailure(); ++round) {
            // Others are refused, or lost in the attacker's folder.
            support::ErrorOf(save);
            EXPECT_TRUE(IsSafe()) << "round " << round;
        }
    }

    static void AddToFile(std::string const& path) {
        FileLock lock(path, kShortWait);
        lock.Save(lock.Bytes().value_or("") + "x");
    }

    support::TemporaryFolder fFolder;
    std::string const fRoots = fFolder / "roots";
    std::string const fRootsFile = fFolder / "roots/a";
};

} // namespace

TEST_F(AttackTest, AFolderExchangedWithALinkLeadsNowhere) {
    MakeFolder("theirs", 0755, kAttacker);
    std::filesystem::create_directory(fFolder / "theirs/d");
    std::filesystem::rename(fFolder / "theirs/a", fFolder / "theirs/d/a");
    ASSERT_EQ(chown((fFolder / "theirs/d").c_str(), kAttacker, kAttacker), 0);
    std::string const folder = fFolder / "theirs/d";
    std::string const aside = fFolder / "theirs/aside";
    Survive(
        [&] {
            rename(folder.c_str(), aside.c_str());
            static_cast<void>(symlink(fRoots.c_str(), folder.c_str()));
            unlink(folder.c_str());
            rename(aside.c_str(), folder.c_str());
        },
        [&] { AddToFile(folder + "/a"); });
}

TEST_F(AttackTest, AFileInAStickyFolderExchangedWithALinkLeadsNowhere) {
    MakeFolder("sticky", 01777, 0);
    std::string const file = fFolder / "sticky/a";
    std::string const aside = fFolder / "sticky/aside";
    Survive(
        [&, isHard = false]() mutable {
            struct stat status {};
            stat(file.c_str(), &status);
            rename(file.c_str(), aside.c_str());
            isHard = !isHard;
            static_cast<void>(
                isHard ? link(fRootsFile.c_str(), file.c_str())
                       : symlink(fRootsFile.c_str(), file.c_str()));
            timespec const times[] = {status.st_atim, status.st_mtim};
            utimensat(AT_FDCWD, file.c_str(), times, AT_SYMLINK_NOFOLLOW);
            rename(aside.c_str(), file.c_str());
        },
        [&] { AddToFile(file); });
}

TEST_F(AttackTest, AFileThatTheComponentHasJustMadeIsNotExchanged) {
    MakeFolder("theirs", 0755, kAttacker);
    std::string const file = fFolder / "theirs/a";
    Component const component = Component::Start();
    RawAccess raw;
    Settings const settings = Settings::Parse("<< /A 1 >> setalembicorparams");
    detail::Bindings const tables(raw.Lookup());
    ::PDFSettings* const object = raw.Object(settings);
    std::u16string const units(file.begin(), file.end());
    detail::BufferRef const path(
        tables.buffers.NewBuffer(2 * units.size(), nullptr, nullptr, nullptr, nullptr),
        tables.buffers.Release);
    std::memcpy(tables.buffers.GetBuffer(path.get()), units.data(), 2 * units.size());
    Survive(
        [&] {
            unlink(file.c_str());
            static_cast<void>(symlink(fRootsFile.c_str(), file.c_str()));
        },
        [&] { detail::ThrowIfError(tables, tables.settings.Write(object, path.get())); });
}

// Root with another user's environment.
TEST_F(AttackTest, NoFolderIsMadeWhereAnotherUserLeads) {
    MakeFolder("theirs", 0755, kAttacker);
    std::string const way = fFolder / "theirs/d";
    Component const component = Component::Start();
    support::EnvironmentVariable const data("XDG_DATA_HOME", (way + "/data").c_str());
    umask(0);
    std::set<std::string> answers;
    Survive(
        [&] {
            static_cast<void>(symlink(fRoots.c_str(), way.c_str()));
            unlink(way.c_str());
            mkdir(way.c_str(), 0755);
            rmdir(way.c_str());
        },
        [&] { answers.insert(UserFolder().string()); });
    umask(022);
    EXPECT_EQ(answers, std::set<std::string>{way + "/data/Ardeo/Ardeo PDF/Settings"});
    EXPECT_FALSE(std::filesystem::exists(way + "/data"));
}

TEST_F(AttackTest, AsksForTheRightsOfTheEffectiveUser) {
    MakeFolder("open", 0777, 0);
    std::string const file = fFolder / "open/a";
    ASSERT_EQ(chown(file.c_str(), 0, 0), 0);
    chmod(file.c_str(), 0644);
    ASSERT_EQ(seteuid(kAttacker), 0);
    std::string const message = support::MessageOf([&] { SaveSafely(file, "new"); });
    EXPECT_TRUE(IsReadOnly(file));
    EXPECT_EQ(seteuid(0), 0);
    EXPECT_EQ(message, "read-only: Permission denied");
    EXPECT_EQ(ReadBytes(file), "old");
}
