// Links on the way to a saved file.
#include "pdfsettings/SafeSave.h"

#include "tests/support/ErrorOf.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace pdfsettings;
using support::ReadBytes;

namespace {

constexpr uid_t kOther = 12345;

class SaveLinksTest : public testing::Test {
protected:
    std::string Link(std::string const& name, std::string const& to) const {
        std::filesystem::create_symlink(to, fFolder / name);
        return fFolder / name;
    }

    void SetUp() override {
        if (geteuid() != 0) {
            GTEST_SKIP() << "only root can give files to another user";
        }
    }

    void Give(std::string const& name) const {
        ASSERT_EQ(lchown((fFolder / name).c_str(), kOther, getgid()), 0);
    }

    static std::string Save(std::string const& path) {
        return support::MessageOf([&] { SaveSafely(path, "new"); });
    }

    static std::string Refusal(std::string const& link) {
        return "the link " + link + " is not followed: it belongs to another user than its target";
    }

    support::TemporaryFolder fFolder;
};

} // namespace

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
    for (char const* const folder : {"ours", "theirs"}) {
        std::filesystem::create_directory(fFolder / folder);
    }
    for (char const* const file : {"ours/a", "theirs/a"}) {
        fFolder.Make(file, "old");
    }
    Give("theirs");
    Give("theirs/a");
    struct {
        char const* fLink;
        char const* fTo;
        char const* fBehind; // what follows the link in the path
        bool fIsTheirs;
        bool fIsFollowed;
    } const kCases[] = {
        {"1", "ours/a", "", true, false},
        {"2", "theirs/a", "", true, true},
        {"3", "ours", "/a", true, false},
        {"4", "theirs", "/a", true, true},
        {"5", "ours/missing", "", true, false},
        {"6", "theirs/missing", "", true, true},
        // Ours in a folder of ours lead anywhere.
        {"7", "theirs/a", "", false, true},
        {"8", "theirs", "/a", false, true},
        // But not in a folder of theirs.
        {"theirs/9", "a", "", false, false},
        {"theirs/10", "../ours/a", "", false, true},
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
