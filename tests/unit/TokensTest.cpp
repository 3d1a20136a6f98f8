#include "format/Tokens.h"

#include "format/SettingPath.h"

#include <gtest/gtest.h>
#include <string>

namespace format {

namespace {

// The bytes of a set, in their order.
std::string BytesOf(CharSet const& set) {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        auto const c = static_cast<char>(byte);
        bytes += set.Has(c) ? std::string(1, c) : "";
    }
    return bytes;
}

} // namespace

TEST(Tokens, AreMadeOfTheBytesOfTheFormat) {
    EXPECT_EQ("\t\n\r ", BytesOf(kBlanks));
    EXPECT_EQ(std::string("\0\t\n\f\r %()/<>[]{}", 16), BytesOf(kNameEnds));
    EXPECT_EQ(std::string("\0-0123456789", 12), BytesOf(kNumberStarts));
    EXPECT_EQ("\t\n\r >]", BytesOf(kNumberEnds));
}

// With and without memory, whatever was looked for before.
TEST(Tokens, EndWhereTheFormatSaysFromEveryPlace) {
    std::string const far(40, 'x');
    std::string const text = "(a\\)b) (\\\\) 1.5 2" + far + ".3]4" + far + " 5/B.6>( 7" + far + "(";
    auto const isEscaped = [&](std::size_t at) {
        return text[at - 1] == '\\' && (at < 2 || text[at - 2] != '\\');
    };
    FarSearches searches;
    for (std::size_t first = 1; first < text.size(); ++first) {
        std::size_t end = text.find(')', first);
        while (end != std::string::npos && isEscaped(end)) {
            end = text.find(')', end + 1);
        }
        std::size_t const stop = text.find_first_of(" \n\r\t]>", first);
        for (FarSearches* const memory : {&searches, static_cast<FarSearches*>(nullptr)}) {
            char const* const from = text.c_str() + first;
            char const* const found = EndOfString(from, memory);
            EXPECT_EQ(end == std::string::npos ? nullptr : text.c_str() + end, found) << first;
            NumberToken const token = FindNumber(from, memory);
            bool const isOpen = stop == std::string::npos;
            EXPECT_EQ(isOpen ? nullptr : text.c_str() + stop, token.fEnd) << first;
            EXPECT_EQ(!isOpen && text.find('.', first) < stop, token.fHasPoint) << first;
        }
    }
}

TEST(SettingPath, IsTakenApartAtTheSlashesThatBeginNoKey) {
    struct {
        char const* fPath;
        char const* fFirst;
        char const* fParent;
        char const* fLast;
        char const* fRule;
    } const rows[] = {
        {"7", "7", "", "7", "7"},
        {"A//B", "A", "A", "/B", "A//B"},
        {"A/0/B/12", "A", "A/0/B", "12", "A/*/B/*"},
        {"A/0x", "A", "A", "0x", "A/0x"}};
    for (auto const& row : rows) {
        EXPECT_EQ(row.fFirst, FirstPart(row.fPath));
        EXPECT_EQ(row.fParent, ParentPath(row.fPath));
        EXPECT_EQ(row.fLast, LastPart(row.fPath));
        EXPECT_EQ(row.fRule, RulePath(row.fPath));
    }
}

} // namespace format
