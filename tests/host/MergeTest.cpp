#include "pdfsettings/Merge.h"

#include "pdfsettings/Compare.h"
#include "pdfsettings/Error.h"
#include "tests/support/Rounds.h"

#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <random>
#include <string>

using namespace pdfsettings;

namespace {

// Our text after a merge, the conflicts as "path ", and the tail.
std::string Merged(std::string const& base, std::string const& ours, std::string const& theirs) {
    auto const [document, conflicts] = Merge(Document(base), Document(ours), Document(theirs));
    std::string text = document.Text();
    for (MergeConflict const& conflict : conflicts) {
        text += " | " + conflict.path;
    }
    return text;
}

std::string Set(std::string const& entries, std::string const& tail = "") {
    return "<< " + entries + " >> setalembicorparams" + tail;
}

TEST(MergeTest, TakesTheirChangesAndKeepsOurText) {
    struct {
        std::string fBase;
        std::string fOurs;
        std::string fTheirs;
        std::string fMerged;
    } const kCases[] = {
        {Set("/A 1 % one\n/B 1"),
         Set("/A 1 % one\n/B 2"),
         Set("/A 1.50 /B 1"),
         Set("/A 1.50 % one\n/B 2")},
        {Set("/A 1 /B 1 "), Set("/B 1 /A 01 "), Set("/B 1 /C (x)"), Set("/B 1 /C (x)")},
        {Set("/D << /X 1 >>"),
         Set("/D << /X 1 /Y 2 >>"),
         Set("/D << /X 3 >>"),
         Set("/D << /X 3 /Y 2 >>")},
        {Set("/A [ 1 2 ]"), Set("/A [ 1 2 ] /B 1"), Set("/A [ 2 ]"), Set("/A [ 2 ] /B 1")},
        {Set("/A 1"), Set("/A 1"), Set("/A 2", "\nnew"), Set("/A 2", "\nnew")},
        {Set("/A 1", "\nold"), Set("/A 2", "\nold"), Set("/A 1", "\nnew"), Set("/A 2", "\nnew")},
        {Set("/A 1", "\nold"),
         Set("/A 1", "\nours"),
         Set("/A 1", "\ntheirs"),
         Set("/A 1", "\nours") + " | AlembicorData"},
        {Set("/A 1"),
         Set("/A 2"),
         Set("/A 3"),
         Set("\n% conflict: A\n%   ours:   2\n%   theirs: 3\n/A 2") + " | A"},
        {Set("\r\n  /A 1\r\n"),
         Set("\r\n  /A (\n)\r\n"),
         Set("/B 1"),
         Set("\r\n  % conflict: A\r\n  %   ours:   (\\n)\r\n  %   theirs: (removed)\r\n  /A (\n)"
             "\r\n  /B 1\r\n") +
             " | A"},
        {Set("/D << /X 1 /Y 1 >>"),
         Set("/D << /Y 1 >>"),
         Set("/D << /X 2 /Y 1 >>"),
         Set("/D << /Y 1 \n% conflict: D/X\n%   ours:   (removed)\n%   theirs: 2\n>>") + " | D/X"},
        {"", Set("/A 1"), Set("/A 1 /B 2"), Set("/A 1 /B 2")},
        {Set("/A 1"),
         Set("/A 2"),
         "",
         Set("\n% conflict: A\n%   ours:   2\n%   theirs: (removed)\n/A 2") + " | A"}};
    for (auto const& row : kCases) {
        EXPECT_EQ(Merged(row.fBase, row.fOurs, row.fTheirs), row.fMerged);
    }
    EXPECT_THROW(Merged("<< /A", Set("/A 1"), Set("/A 1")), Error);
}

// Sets with a few settings, also in a dictionary, and what a merge by single settings gives.
class MergeModelTest : public testing::Test {
protected:
    using Settings = std::map<std::string, int>;

    Settings Changed(Settings settings) {
        for (unsigned changes = fRandom() % 4; changes > 0; --changes) {
            std::string const key =
                std::string(fRandom() % 2 == 0 ? "D/" : "") + "ABC"[fRandom() % 3];
            settings.erase(key);
            if (fRandom() % 3 != 0) {
                settings[key] = static_cast<int>(fRandom() % 3);
            }
        }
        return settings;
    }

    // The dictionary is always there.
    static std::string TextOf(Settings const& settings) {
        std::string entries;
        std::string nested;
        for (auto const& [key, value] : settings) {
            bool const isNested = key.starts_with("D/");
            (isNested ? nested : entries) +=
                "/" + key.substr(isNested ? 2 : 0) + " " + std::to_string(value) + " ";
        }
        return Set(entries + "/D << /Z 0 " + nested + ">>");
    }

    static std::optional<int> At(Settings const& settings, std::string const& key) {
        auto const found = settings.find(key);
        return found == settings.end() ? std::nullopt : std::optional(found->second);
    }

    // The merged settings, and the number of conflicts.
    static std::pair<Settings, std::size_t>
    Expected(Settings const& base, Settings const& ours, Settings const& theirs) {
        Settings expected;
        std::size_t conflicts = 0;
        for (std::string const key : {"A", "B", "C", "D/A", "D/B", "D/C"}) {
            auto const before = At(base, key);
            auto const left = At(ours, key);
            auto const right = At(theirs, key);
            auto const taken = left == before ? right : left;
            conflicts += left != before && right != before && left != right ? 1U : 0U;
            if (taken) {
                expected[key] = *taken;
            }
        }
        return {expected, conflicts};
    }

    std::mt19937 fRandom{5};
};

TEST_F(MergeModelTest, EachSettingIsThatOfWhoChangedIt) {
    std::size_t conflicts = 0;
    for (int round = 0; round < support::Rounds(1000); ++round) {
        Settings const base = Changed({{"A", 0}, {"D/A", 0}, {"D/B", 1}, {"C", 1}});
        Settings const ours = Changed(base);
        Settings const theirs = Changed(base);
        auto const [expected, expectedConflicts] = Expected(base, ours, theirs);
        auto const merged =
            Merge(Document(TextOf(base)), Document(TextOf(ours)), Document(TextOf(theirs)));
        ASSERT_TRUE(Compare(merged.document, Document(TextOf(expected))).empty())
            << TextOf(base) << TextOf(ours) << TextOf(theirs) << merged.document.Text();
        ASSERT_EQ(merged.conflicts.size(), expectedConflicts);
        conflicts += expectedConflicts;
    }
    EXPECT_GT(conflicts, 50U);
}

} // namespace
