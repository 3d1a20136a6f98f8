#include "format/Tokens.h"

#include "format/SettingPath.h"

#include <gtest/gtest.h>
#include <string>

namespace format {

namespace {

// What the documents say of each byte: b a blank, n a byte that ends a name, s one that a number
// begins with, e one that ends its token. All others have no such meaning.
struct Row {
    int fByte;
    char const* fMeaning;
};

constexpr Row kTable[] = {{0x00, "ns"}, {'\t', "bne"}, {'\n', "bne"}, {'\f', "n"}, {'\r', "bne"},
                          {' ', "bne"}, {'%', "n"},    {'(', "n"},    {')', "n"},  {'-', "s"},
                          {'/', "n"},   {'0', "s"},    {'1', "s"},    {'2', "s"},  {'3', "s"},
                          {'4', "s"},   {'5', "s"},    {'6', "s"},    {'7', "s"},  {'8', "s"},
                          {'9', "s"},   {'<', "n"},    {'>', "ne"},   {'[', "n"},  {']', "ne"},
                          {'{', "n"},   {'}', "n"}};

std::string Meaning(int byte) {
    for (Row const& row : kTable) {
        if (row.fByte == byte) {
            return row.fMeaning;
        }
    }
    return "";
}

} // namespace

TEST(Tokens, ClassesOfAllBytesAreThoseOfTheFormat) {
    for (int byte = 0; byte < 256; ++byte) {
        auto const c = static_cast<char>(byte);
        std::string const found =
            std::string(kBlanks.Has(c) ? "b" : "") + (kNameEnds.Has(c) ? "n" : "") +
            (kNumberStarts.Has(c) ? "s" : "") + (kNumberEnds.Has(c) ? "e" : "");
        EXPECT_EQ(Meaning(byte), found) << byte;
    }
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
        {"A", "A", "", "A", "A"},
        {"7", "7", "", "7", "7"},
        {"A/B", "A", "A", "B", "A/B"},
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
