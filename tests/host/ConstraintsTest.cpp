#include "pdfsettings/Component.h"
#include "pdfsettings/Settings.h"

#include <gtest/gtest.h>

namespace pdfsettings {

namespace {

// "path line: message" of each finding, and " < path" for each related setting.
std::string Lines(Findings const& findings) {
    std::string lines;
    for (Finding const& finding : findings) {
        lines +=
            finding.Path() + " " + std::to_string(finding.Where()->line) + ": " + finding.Message();
        for (Finding const& related : finding.Related()) {
            lines += " < " + related.Path() + " " + std::to_string(related.Where()->line);
        }
        lines += "\n";
    }
    return lines;
}

Schema Rules() {
    return Schema::Parse(
        "< PDFSettings < optional < A < type number default 5 > B number L array M array "
        "S < type string default (x) > N D D D > > D < optional < Q name > > rules [ "
        "< ordered [ A B ] doc (why) > < disjoint [ L M ] severity warning > "
        "< when < S < not x > N/Q < in [ a b ] > > then < A < min 1 max 4 > B < is 2 > > > ] >");
}

class Constraints : public testing::Test {
    Component const fComponent = Component::Start();
};

} // namespace

TEST_F(Constraints, AreInWordsWithTheSettingsToChangeFirst) {
    Schema const schema = Rules();
    std::string words;
    for (Constraint const& constraint : schema.Constraints()) {
        words += constraint.Level() == Severity::kError ? "error " : "warning ";
        for (std::string const& path : constraint.Paths()) {
            words += path + " ";
        }
        words += "| " + constraint.Text() + " | " + constraint.Help() + "\n";
    }
    EXPECT_EQ(
        "error A B | A is at most B | why\n"
        "warning L M | L and M have no common element | \n"
        "error A B S N/Q | A is at least 1 and at most 4, and B is 2 where S is not (x) and "
        "N/Q is one of /a, /b | \n",
        words);
    EXPECT_EQ(1U, schema.ConstraintsOf("N/Q").size());
    EXPECT_EQ("why", schema.ConstraintsOf("A")[0].Help());
}

TEST_F(Constraints, RejectOrAdviseAgainstValuesWithTheirPlaces) {
    auto const settings = Settings::Parse(
        "<< /A 3\n/B 2\n/L [ /x\n(y) ]\n/M [ (y) ]\n/S (z)\n/N << /Q /a >>\n>> setalembicorparams",
        Rules());
    EXPECT_EQ(
        "A 1: expected at most 2, the value of B, found 3: why < B 2\n",
        Lines(settings.Validate()));
    EXPECT_EQ(
        "L/1 4: expected no element of M, found (y) < L 3 < M 5\n", Lines(settings.Warnings()));
    // Values of all kinds reach the rules.
    EXPECT_EQ(
        "B 1: expected 2, found 9 where S is not (x) and N/Q is /b < S 1 < N/Q 1 < A 1\n",
        Lines(Settings::Parse("<< /A 3 /B 9 /S (z) /N << /Q /b >> >> setalembicorparams", Rules())
                  .Validate()));
    EXPECT_EQ(
        "A 1: expected at most 2, the value of B, found 5 (the default): why < B 1\n",
        Lines(Settings::Parse("<< /B 2 >> setalembicorparams", Rules()).Validate()));
}

TEST_F(Constraints, RefuseAChangeThatNewlyViolatesThem) {
    auto settings = Settings::Parse("<< /A 3 /L [ /x ] >> setalembicorparams", Rules());
    auto refused = settings.Change();
    refused.Set("B", 2);
    EXPECT_EQ(
        "A 1: expected at most 2, the value of B, found 3: why < B 1\n", Lines(refused.Commit()));
    auto advised = settings.Change();
    advised.SetText("M", "[ /x ]");
    EXPECT_EQ(1U, advised.Warnings().size());
    EXPECT_TRUE(advised.Commit().empty());
    EXPECT_TRUE(settings.Change().Warnings().empty()) << "it was there before";
    auto old = Settings::Parse("<< /A 3 /B 2 >> setalembicorparams", Rules());
    auto unrelated = old.Change();
    unrelated.SetText("L", "[ ]");
    EXPECT_TRUE(unrelated.Commit().empty());
}

} // namespace pdfsettings
