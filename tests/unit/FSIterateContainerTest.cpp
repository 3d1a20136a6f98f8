#include "external/MoreFilesX/FSIterateContainer.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include "tests/support/TemporaryFolder.h"
#include "tests/unit/FileServiceDouble.h"

namespace {

// What a callback saw, as "level name" with a slash behind a folder's name; where it stops.
struct Visits {
    std::vector<std::string> fSeen;
    std::string fStopAt;

    bool Saw(std::string const& visit) const {
        return std::find(fSeen.begin(), fSeen.end(), visit) != fSeen.end();
    }
};

Boolean Note(
    Boolean /*containerChanged*/,
    ItemCount level,
    FSCatalogInfo const* info,
    FSRef const* ref,
    FSSpec const* spec,
    HFSUniStr255 const* name,
    void* userData) {
    auto& visits = *static_cast<Visits*>(userData);
    EXPECT_EQ(nullptr, spec);
    std::string const text(name->unicode, name->unicode + name->length);
    EXPECT_TRUE(ref->path.ends_with("/" + text)) << ref->path;
    bool const isFolder = (info->nodeFlags & kFSNodeIsDirectoryMask) != 0;
    visits.fSeen.push_back(std::to_string(level) + " " + text + (isFolder ? "/" : ""));
    return text == visits.fStopAt ? 1 : 0;
}

// Removes all items but this one, and counts the visit.
Boolean RemoveOthers(
    Boolean /*containerChanged*/,
    ItemCount /*level*/,
    FSCatalogInfo const* /*info*/,
    FSRef const* ref,
    FSSpec const* /*spec*/,
    HFSUniStr255 const* name,
    void* userData) {
    EXPECT_EQ(nullptr, name);
    std::filesystem::path const seen = ref->path;
    for (auto const& file : std::filesystem::directory_iterator(seen.parent_path())) {
        if (file.path() != seen) {
            std::filesystem::remove(file);
        }
    }
    ++*static_cast<int*>(userData);
    return 0;
}

class Iteration : public testing::Test {
protected:
    ~Iteration() override { EXPECT_EQ(fDescriptors, support::CountDescriptors()); }

    OSErr Walk(Visits* visits, ItemCount maxLevels) const {
        FSRef const folder{fFolder.Path().string()};
        return FSIterateContainer(&folder, maxLevels, 0, 0, 1, &Note, visits);
    }

    // Walks to every depth where the n-th call fails. What was seen.
    Visits WalkFailing(unsigned long n, OSErr code, OSErr expected, bool reachesService = false) {
        Visits visits;
        fService.FailCall(n, code, reachesService);
        EXPECT_EQ(expected, Walk(&visits, 0)) << n;
        return visits;
    }

    // The number of the n-th call of an operation in a walk without failures.
    unsigned long NumberOf(char const* operation, unsigned long n) {
        WalkFailing(0, noErr, noErr);
        unsigned long number = 0;
        while (n > 0) {
            n -= fService.fCalls[number++] == operation ? 1U : 0U;
        }
        return number;
    }

    support::TemporaryFolder fFolder;
    long fDescriptors = support::CountDescriptors();
    support::FileServiceDouble fService;
};

} // namespace

TEST_F(Iteration, VisitsFoldersBeforeWhatIsInThemDownToALevel) {
    std::filesystem::create_directories(fFolder / "a/b/c");
    std::filesystem::create_directory_symlink("..", fFolder / "a/up");
    struct {
        ItemCount fMaxLevels;
        char const* fStopAt;
        std::vector<std::string> fSeen;
    } const kCases[] = {
        {1, "", {"1 a/"}},
        {2, "", {"1 a/", "2 b/", "2 up"}},
        {3, "", {"1 a/", "2 b/", "3 c/", "2 up"}},
        {0, "", {"1 a/", "2 b/", "3 c/", "2 up"}},
        {0, "a", {"1 a/"}},
    };
    for (auto const& [maxLevels, stopAt, expected] : kCases) {
        Visits visits{{}, stopAt};
        EXPECT_EQ(noErr, Walk(&visits, maxLevels));
        EXPECT_EQ(expected.front(), visits.fSeen.front());
        std::sort(visits.fSeen.begin(), visits.fSeen.end());
        auto sorted = expected;
        std::sort(sorted.begin(), sorted.end());
        EXPECT_EQ(sorted, visits.fSeen) << maxLevels << stopAt;
    }
    std::filesystem::remove_all(fFolder / "a");
    Visits none;
    EXPECT_EQ(noErr, Walk(&none, 0));
    EXPECT_TRUE(none.fSeen.empty());
    FSRef const folder{fFolder / "missing"};
    EXPECT_EQ(fnfErr, FSIterateContainer(&folder, 0, 0, 0, 1, &Note, &none));
    EXPECT_EQ(paramErr, FSIterateContainer(&folder, 0, 0, 0, 1, nullptr, &none));
}

TEST_F(Iteration, LeavesOutWhatHasNoTextOrCannotBeLookedAt) {
    fFolder.Make("bad\xFF", "");
    std::filesystem::create_symlink(std::string(300, 'x'), fFolder / "impossible");
    for (char const* const name : {"a", "b", "c"}) {
        fFolder.Make(name, "");
    }
    Visits visits;
    EXPECT_EQ(noErr, Walk(&visits, 1));
    std::sort(visits.fSeen.begin(), visits.fSeen.end());
    EXPECT_EQ((std::vector<std::string>{"1 a", "1 b", "1 c"}), visits.fSeen);
}

// Two folders in each folder: whichever comes first is refused, and cuts its parent short.
TEST_F(Iteration, EndsALevelAtADenialAndAllAtAnotherError) {
    for (char const* const path : {"1/1", "1/2", "2/1", "2/2"}) {
        std::filesystem::create_directories(fFolder / path);
    }
    std::size_t const all = WalkFailing(0, noErr, noErr).fSeen.size();
    EXPECT_EQ(6U, all);
    unsigned long const top = NumberOf("FSOpenIterator", 1);
    EXPECT_EQ(0U, WalkFailing(top, afpAccessDenied, afpAccessDenied).fSeen.size());
    EXPECT_EQ(0U, WalkFailing(top, ioErr, ioErr).fSeen.size());
    unsigned long const first = NumberOf("FSOpenIterator", 2);
    EXPECT_EQ(1U, WalkFailing(first, afpAccessDenied, noErr).fSeen.size());
    EXPECT_EQ(1U, WalkFailing(first, ioErr, ioErr).fSeen.size());
    // One level further down the rest of the top folder is still visited.
    unsigned long const inner = NumberOf("FSOpenIterator", 3);
    EXPECT_EQ(5U, WalkFailing(inner, afpAccessDenied, noErr).fSeen.size());
    EXPECT_EQ(2U, WalkFailing(inner, dirNFErr, dirNFErr).fSeen.size());
    // The second item of the first inner folder.
    unsigned long const item = NumberOf("FSGetCatalogInfoBulk", 4);
    EXPECT_EQ(5U, WalkFailing(item, afpAccessDenied, noErr).fSeen.size());
    EXPECT_EQ(2U, WalkFailing(item, ioErr, ioErr).fSeen.size());
}

// The end may come with the last item, and a failure may come with an item that does not count.
TEST_F(Iteration, VisitsTheItemThatComesWithTheEnd) {
    fFolder.Make("a", "");
    fFolder.Make("b", "");
    unsigned long const second = NumberOf("FSGetCatalogInfoBulk", 2);
    EXPECT_EQ(2U, WalkFailing(second, errFSNoMoreItems, noErr, true).fSeen.size());
    EXPECT_EQ(1U, WalkFailing(second, ioErr, ioErr, true).fSeen.size());
}

TEST_F(Iteration, PassesOverWhatVanishes) {
    for (char const* const name : {"a", "b", "c", "d"}) {
        fFolder.Make(name, "");
    }
    int visits = 0;
    FSRef const folder{fFolder.Path().string()};
    EXPECT_EQ(noErr, FSIterateContainer(&folder, 1, 0, 0, /*wantName=*/0, &RemoveOthers, &visits));
    EXPECT_EQ(1, visits);
}

TEST_F(Iteration, IsDeniedByFoldersThatMayNotBeRead) {
    std::filesystem::create_directory(fFolder / "closed");
    chmod((fFolder / "closed").c_str(), 0);
    FSRef const closed{fFolder / "closed"};
    FSIterator iterator = nullptr;
    OSErr const expected = geteuid() == 0 ? noErr : afpAccessDenied;
    EXPECT_EQ(expected, FSOpenIterator(&closed, kFSIterateFlat, &iterator));
    if (iterator != nullptr) {
        EXPECT_EQ(noErr, FSCloseIterator(iterator));
    }
    EXPECT_EQ(paramErr, FSOpenIterator(&closed, 1, &iterator));
    chmod((fFolder / "closed").c_str(), 0700);
}
