#include "RuntimeFixture.h"

#include <tuple>

namespace runtimetest {
namespace {

class LocateValueTest : public RuntimeTest {};

std::string Locate(char const* text, char const* path) {
    unsigned long line = 0;
    unsigned long column = 0;
    if (BIBRuntimeLocateValue(text, path, &line, &column) == 0) {
        EXPECT_EQ(line + column, 0U);
        return "none";
    }
    return std::to_string(line) + ":" + std::to_string(column);
}

constexpr std::tuple<char const*, char const*, char const*> kPlaces[] = {
    {" % note\n 12", "", "2:2"},
    {"< a 1\n  b < c 2 > >", "b/c", "2:7"},
    {"< a < c 1 > b < c 2 > >", "b/c", "1:17"},
    {"< ab 1 a 2 >", "a", "1:8"},
    {"< a [ 1 [ 2 3 ] < b 4 > ] >", "a/2/b", "1:19"},
    {"< a [ 1 ] >", "a/1", "none"},
    {"< (a b\\n(c)) 1 >", "a_b_(c)", "1:3"},
    {"< () < x 1 > >", "/x", "none"},
    {"< a < () 1 > >", "a/_", "1:7"},
    {"< a 1 a 2 >", "a", "1:7"},
    {"< a < b 1 > a < b 2 c 3 > >", "a/b", "1:17"},
    {"< a < b 1 > a 2 >", "a/b", "none"},
    {"< a/b 1 a 2 >", "a/b", "1:3"},
    {"< a 1 > x", "a", "none"},
    {"< a (x", "a", "none"}};

TEST_F(LocateValueTest, FollowsThePathToTheLastOfItsName) {
    for (auto const& [text, path, place] : kPlaces) {
        EXPECT_EQ(Locate(text, path), place) << text << " at " << path;
    }
}

TEST_F(LocateValueTest, NullArgumentsAndNoMemoryGiveNothing) {
    unsigned long number = 0;
    EXPECT_EQ(Locate(nullptr, ""), "none");
    EXPECT_EQ(Locate("1", nullptr), "none");
    EXPECT_EQ(BIBRuntimeLocateValue("1", "", nullptr, &number), 0);
    EXPECT_EQ(BIBRuntimeLocateValue("1", "", &number, nullptr), 0);
    bibrt::FailAllocation(1, /*andAllLater=*/true);
    EXPECT_EQ(Locate("[ 1 ]", "[0]"), "none");
}

} // namespace
} // namespace runtimetest
