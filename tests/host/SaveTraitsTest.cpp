// Permissions, owners and attributes of replaced files.
#include "pdfsettings/SafeSave.h"

#include "tests/host/SystemCallsDouble.h"
#include "tests/support/AccessList.h"
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
using support::Attribute;
using support::kAccessList;
using support::kDefaultList;
using support::SystemCallsDouble;

namespace {

// user::rw-, user:7777:rw-, group::GROUP, group:4000:---, mask::rw-, other::OTHERS.
std::string List(char groupPermissions, char otherPermissions = 0) {
    return support::AccessList({6, 6, groupPermissions, 0, 6, otherPermissions});
}

class SaveTraitsTest : public testing::Test {
protected:
    void SetUp() override {
        if (!support::SetAttribute(fFile, kAccessList, List(4))) {
            GTEST_SKIP() << "no access control lists on this file system";
        }
        removexattr(fFile.c_str(), kAccessList);
    }

    void SetList(std::string const& path, char const* name, std::string const& list) const {
        ASSERT_TRUE(support::SetAttribute(path, name, list));
    }

    mode_t Mode() const {
        struct stat status {};
        stat(fFile.c_str(), &status);
        return status.st_mode & 07777;
    }

    // Another user takes permissions away at a call.
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
        } catch (Error const& error) {
            EXPECT_EQ(error.Code(), Fault::kConflict);
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
        EXPECT_TRUE(SaveSafely(fFile, std::to_string(mode)).empty());
        EXPECT_EQ(Mode(), mode & 01777U);
    }
    chmod(fFile.c_str(), 0660);
    SetList(fFile, kAccessList, List(0));
    ASSERT_TRUE(support::SetAttribute(fFile, "user.note", "n"));
    EXPECT_TRUE(SaveSafely(fFile, "listed").empty());
    EXPECT_EQ(Attribute(fFile, kAccessList), List(0));
    EXPECT_EQ(Attribute(fFile, "user.note"), "n");
    EXPECT_EQ(Mode(), 0660U);
}

TEST_F(SaveTraitsTest, ComeFromTheFolderForANewFileAlone) {
    SetList(fFolder.Path(), kDefaultList, List(6));
    chmod(fFile.c_str(), 0640);
    SaveSafely(fFile, "new");
    EXPECT_EQ(Attribute(fFile, kAccessList), "");
    EXPECT_EQ(Mode(), 0640U);
    SaveSafely(fFolder / "b", "made");
    EXPECT_EQ(Attribute(fFolder / "b", kAccessList), List(6));
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
        std::vector<std::string> fWarnings;
    } const kCases[] = {
        {"fchown",
         EPERM,
         "",
         0664,
         54321,
         0604,
         "",
         {"its group could not be kept: the group's permissions were removed"}},
        // Members of the old group count as others now: they must not get what they did not have.
        {"fchown",
         EPERM,
         "",
         0626,
         54321,
         0602,
         "",
         {"its group could not be kept: the group's permissions were removed"}},
        {"fchown",
         EPERM,
         List(4, 6),
         0666,
         54321,
         0664,
         List(0, 4),
         {"its group could not be kept: the group's permissions were removed"}},
        {"fsetxattr",
         EPERM,
         List(6, 4),
         0664,
         getgid(),
         0600,
         "",
         {"its access control list could not be kept: only its owner has access now",
          "its attribute user.note could not be kept"}},
        {"fremovexattr",
         EPERM,
         "",
         0666,
         getgid(),
         0600,
         "",
         {"its access control list could not be kept: only its owner has access now"}},
    };
    for (auto const& [call, error, oldList, oldMode, group, mode, list, warnings] : kCases) {
        std::filesystem::remove(fFile);
        fFolder.Make("a", "old");
        ASSERT_TRUE(support::SetAttribute(fFile, "user.note", "n"));
        if (!oldList.empty()) {
            SetList(fFile, kAccessList, oldList);
        }
        chmod(fFile.c_str(), oldMode);
        SystemCallsDouble calls;
        calls.PretendOwners();
        SystemCallsDouble::SetOwner(fFile, {getuid(), group});
        calls.FailAlways(call, error);
        EXPECT_EQ(std::vector<std::string>(SaveSafely(fFile, "new")), warnings) << call;
        EXPECT_EQ(Mode(), mode) << call;
        EXPECT_EQ(Attribute(fFile, kAccessList), list) << call;
    }
}

TEST_F(SaveTraitsTest, KeepOwnerAndGroupWhereTheSystemAllowsIt) {
    SystemCallsDouble calls;
    calls.PretendOwners();
    SystemCallsDouble::SetOwner(fFile, {12345, 54321});
    EXPECT_TRUE(SaveSafely(fFile, "new").empty());
    EXPECT_EQ(SystemCallsDouble::OwnerOf(fFile), (support::Owner{12345, 54321}));
    calls.FailNext("fchown", EPERM);
    EXPECT_EQ(
        std::vector<std::string>(SaveSafely(fFile, "newer")),
        std::vector<std::string>{"its owner could not be kept: you own it now"});
    EXPECT_EQ(SystemCallsDouble::OwnerOf(fFile), (support::Owner{getuid(), 54321}));
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
