// Permissions, owners and attributes of replaced files.
#include "pdfsettings/SafeSave.h"

#include "tests/host/SystemCallsDouble.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <cerrno>
#include <functional>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <utility>

using namespace pdfsettings;
using support::SystemCallsDouble;

namespace {

constexpr char kAccess[] = "system.posix_acl_access";
constexpr char kDefault[] = "system.posix_acl_default";

// A list in the system's form: user::rw-, user:7777:rw-, group::PERMISSIONS, mask::rw-,
// other::PERMISSIONS.
std::string List(char groupPermissions, char otherPermissions = 0) {
    std::string list("\2\0\0\0", 4);
    auto const add = [&list](char tag, char permissions, std::string const& id) {
        list += {tag, 0, permissions, 0};
        list += id;
    };
    std::string const none(4, '\xFF');
    add(0x01, 6, none);
    add(0x02, 6, std::string("\x61\x1E\0\0", 4));
    add(0x04, groupPermissions, none);
    add(0x10, 6, none);
    add(0x20, otherPermissions, none);
    return list;
}

class SaveTraitsTest : public testing::Test {
protected:
    void SetUp() override {
        if (setxattr(fFile.c_str(), kAccess, List(4).data(), List(4).size(), 0) != 0) {
            GTEST_SKIP() << "no access control lists on this file system";
        }
        removexattr(fFile.c_str(), kAccess);
    }

    void SetList(std::string const& path, char const* name, std::string const& list) const {
        ASSERT_EQ(setxattr(path.c_str(), name, list.data(), list.size(), 0), 0);
    }

    static std::string Attribute(std::string const& path, char const* name) {
        std::string value(1000, '\0');
        ssize_t const size = getxattr(path.c_str(), name, value.data(), value.size());
        value.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
        return value;
    }

    mode_t Mode() const {
        struct stat status {};
        stat(fFile.c_str(), &status);
        return status.st_mode & 07777;
    }

    // Somebody takes permissions away at a call.
    std::function<void(int)> NarrowAt(int moment) const {
        return [this, moment, isDone = false](int call) mutable {
            if (call >= moment && !std::exchange(isDone, true)) {
                chmod(fFile.c_str(), 0600);
            }
        };
    }

    bool IsSaved(std::string const& bytes) const {
        try {
            SaveSafely(fFile, bytes);
            return true;
        } catch (ConflictError const&) {
            return false;
        }
    }

    support::TemporaryFolder fFolder;
    std::string fFile = fFolder.Make("a", "old");
};

} // namespace

TEST_F(SaveTraitsTest, AreKeptWithoutSetIdBits) {
    for (mode_t const mode : {0640U, 0666U, 0600U, 0755U, 06755U, 01666U}) {
        chmod(fFile.c_str(), mode);
        EXPECT_EQ(SaveSafely(fFile, std::to_string(mode)), SaveWarnings());
        EXPECT_EQ(Mode(), mode & 01777U);
    }
    chmod(fFile.c_str(), 0660);
    SetList(fFile, kAccess, List(0));
    ASSERT_EQ(setxattr(fFile.c_str(), "user.note", "n", 1, 0), 0);
    EXPECT_EQ(SaveSafely(fFile, "listed"), SaveWarnings());
    EXPECT_EQ(Attribute(fFile, kAccess), List(0));
    EXPECT_EQ(Attribute(fFile, "user.note"), "n");
    EXPECT_EQ(Mode(), 0660U);
}

TEST_F(SaveTraitsTest, ComeFromTheFolderForANewFileAlone) {
    SetList(fFolder.Path(), kDefault, List(6));
    chmod(fFile.c_str(), 0640);
    SaveSafely(fFile, "new");
    EXPECT_EQ(Attribute(fFile, kAccess), "");
    EXPECT_EQ(Mode(), 0640U);
    SaveSafely(fFolder / "b", "made");
    EXPECT_EQ(Attribute(fFolder / "b", kAccess), List(6));
}

TEST_F(SaveTraitsTest, AreCutAndNeverWidenedWhereTheyCannotBeKept) {
    struct {
        char const* fCall;
        int fError;
        std::string fOldList; // empty for the old mode alone
        mode_t fOldMode;
        gid_t fGroup; // of the old file
        mode_t fMode;
        std::string fList;
        SaveWarnings fWarnings;
    } const kCases[] = {
        {"fchown",
         EPERM,
         "",
         0664,
         54321,
         0604,
         "",
         {"its group could not be kept: the group's permissions are gone"}},
        // Members of the old group are anybody now: they must not get what they did not have.
        {"fchown",
         EPERM,
         "",
         0626,
         54321,
         0602,
         "",
         {"its group could not be kept: the group's permissions are gone"}},
        {"fchown",
         EPERM,
         List(4, 6),
         0666,
         54321,
         0664,
         List(0, 4),
         {"its group could not be kept: the group's permissions are gone"}},
        {"fsetxattr",
         EPERM,
         List(6, 4),
         0664,
         getgid(),
         0600,
         "",
         {"its access control list could not be kept: it is for its owner alone",
          "its attribute user.note could not be kept"}},
        {"fremovexattr",
         EPERM,
         "",
         0666,
         getgid(),
         0600,
         "",
         {"its access control list could not be kept: it is for its owner alone"}},
    };
    for (auto const& [call, error, oldList, oldMode, group, mode, list, warnings] : kCases) {
        std::filesystem::remove(fFile);
        fFolder.Make("a", "old");
        ASSERT_EQ(setxattr(fFile.c_str(), "user.note", "n", 1, 0), 0);
        if (!oldList.empty()) {
            SetList(fFile, kAccess, oldList);
        }
        chmod(fFile.c_str(), oldMode);
        if (group != getgid() && chown(fFile.c_str(), getuid(), group) != 0) {
            continue; // only root can make a file of a foreign group
        }
        SystemCallsDouble calls;
        calls.FailAlways(call, error);
        EXPECT_EQ(SaveSafely(fFile, "new"), warnings) << call;
        EXPECT_EQ(Mode(), mode) << call;
        EXPECT_EQ(Attribute(fFile, kAccess), list) << call;
    }
}

TEST_F(SaveTraitsTest, KeepOwnerAndGroupWhereTheSystemAllowsIt) {
    if (chown(fFile.c_str(), 12345, 54321) != 0) {
        GTEST_SKIP() << "only root can give files away";
    }
    EXPECT_EQ(SaveSafely(fFile, "new"), SaveWarnings());
    struct stat status {};
    stat(fFile.c_str(), &status);
    EXPECT_EQ(status.st_uid, 12345U);
    EXPECT_EQ(status.st_gid, 54321U);
    SystemCallsDouble calls;
    calls.FailNext("fchown", EPERM);
    EXPECT_EQ(
        SaveSafely(fFile, "newer"), SaveWarnings{"its owner could not be kept: it is yours now"});
    stat(fFile.c_str(), &status);
    EXPECT_EQ(status.st_uid, getuid());
    EXPECT_EQ(status.st_gid, 54321U);
}

TEST_F(SaveTraitsTest, AreNeverWiderWhileTheNewFileIsMade) {
    chmod(fFile.c_str(), 0600);
    SystemCallsDouble calls;
    calls.FailAlways("nameless", EOPNOTSUPP);
    calls.AfterEach([&](int n) {
        for (auto const& entry : std::filesystem::directory_iterator(fFolder.Path())) {
            struct stat status {};
            stat(entry.path().c_str(), &status);
            EXPECT_EQ(status.st_mode & 077U, 0U) << n;
        }
    });
    SaveSafely(fFile, "new");
}

TEST_F(SaveTraitsTest, ThatChangeDuringASaveAreNotUndone) {
    SystemCallsDouble calls;
    int last = 0;
    calls.AfterEach([&](int n) { last = n; });
    SaveSafely(fFile, "counted");
    for (int n = 1; n < last; ++n) {
        chmod(fFile.c_str(), 0666);
        calls.AfterEach(NarrowAt(calls.Count() + n));
        bool const hasSaved = IsSaved(std::to_string(n));
        EXPECT_EQ(support::ReadBytes(fFile) == std::to_string(n), hasSaved) << n;
        EXPECT_EQ(Mode(), 0600U) << n;
    }
}
