#include "external/MoreFilesX/FSIterateContainer.h"

#include "tests/support/SystemCallsDouble.h"
#include "tests/support/TemporaryFolder.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace {

// What a callback saw, as "level name" with a slash behind a folder's name; where it stops.
struct Visits {
    std::vector<std::string> fSeen;
    std::string fStopAt;
};

Boolean Note(
    Boolean /*containerChanged*/,
    ItemCount level,
    FSCatalogInfo const* info,
    FSRef const* ref,
    FSSpec const* /*spec*/,
    HFSUniStr255 const* name,
    void* userData) {
    auto& visits = *static_cast<Visits*>(userData);
    std::string const text(name->unicode, name->unicode + name->length);
    EXPECT_TRUE(ref->path.ends_with("/" + text)) << ref->path;
    bool const isFolder = (info->nodeFlags & kFSNodeIsDirectoryMask) != 0;
    visits.fSeen.push_back(std::to_string(level) + " " + text + (isFolder ? "/" : ""));
    return text == visits.fStopAt ? 1 : 0;
}

class Iteration : public testing::Test {
protected:
    ~Iteration() override { EXPECT_EQ(fDescriptors, support::CountDescriptors()); }

    OSErr Walk(Visits* visits, ItemCount maxLevels) const {
        FSRef const folder{fFolder.Path().string()};
        return FSIterateContainer(&folder, maxLevels, 0, 0, 1, &Note, visits);
    }

    // Walks to every depth where the system does not open the folder with that number, if any. How
    // many visits there were.
    std::size_t WalkFailing(int number, int error, OSErr expected) const {
        support::SystemCallsDouble calls;
        auto const prepare = [&](int) {
            calls.Count("opendir") == number - 1 ? calls.FailNext("opendir", error) : void();
        };
        prepare(0);
        calls.AfterEach(prepare);
        Visits visits;
        EXPECT_EQ(expected, Walk(&visits, 0)) << number << ": " << error;
        return visits.fSeen.size();
    }

    support::TemporaryFolder fFolder;
    long fDescriptors = support::CountDescriptors();
};

} // namespace

TEST_F(Iteration, VisitsFoldersBeforeWhatIsInThemDownToALevel) {
    std::filesystem::create_directories(fFolder / "a/b/c");
    std::filesystem::create_directory_symlink("..", fFolder / "a/up");
    struct {
        ItemCount fMaxLevels;
        char const* fStopAt;
        std::vector<std::string> fSeen; // behind the first in alphabetical order
    } const kCases[] = {
        {1, "", {"1 a/"}},
        {3, "", {"1 a/", "2 b/", "2 up", "3 c/"}},
        {0, "", {"1 a/", "2 b/", "2 up", "3 c/"}},
        {0, "a", {"1 a/"}},
    };
    for (auto const& [maxLevels, stopAt, expected] : kCases) {
        Visits visits{{}, stopAt};
        EXPECT_EQ(noErr, Walk(&visits, maxLevels));
        std::sort(visits.fSeen.begin() + 1, visits.fSeen.end());
        EXPECT_EQ(expected, visits.fSeen) << maxLevels << stopAt;
    }
    std::filesystem::remove_all(fFolder / "a");
    EXPECT_EQ(0U, WalkFailing(0, 0, noErr));
    FSRef const folder{fFolder / "missing"};
    Visits none;
    EXPECT_EQ(fnfErr, FSIterateContainer(&folder, 0, 0, 0, 1, &Note, &none));
    EXPECT_EQ(paramErr, FSIterateContainer(&folder, 0, 0, 0, 1, nullptr, &none));
}

// Two folders in each folder: whichever comes first is refused, and cuts its parent short.
TEST_F(Iteration, EndsALevelAtADenialAndAllAtAnotherError) {
    for (char const* const path : {"1/1", "1/2", "2/1", "2/2"}) {
        std::filesystem::create_directories(fFolder / path);
    }
    EXPECT_EQ(6U, WalkFailing(0, 0, noErr));
    EXPECT_EQ(0U, WalkFailing(1, EACCES, afpAccessDenied));
    EXPECT_EQ(1U, WalkFailing(2, EACCES, noErr));
    EXPECT_EQ(1U, WalkFailing(2, EIO, ioErr));
    // One level further down the rest of the top folder is still visited.
    EXPECT_EQ(5U, WalkFailing(3, EACCES, noErr));
}

TEST_F(Iteration, PassesOverAnItemThatCannotBeLookedAt) {
    fFolder.Make("a", "");
    std::filesystem::create_symlink(std::string(300, 'x'), fFolder / "b");
    fFolder.Make("c", "");
    EXPECT_EQ(2U, WalkFailing(0, 0, noErr));
}
