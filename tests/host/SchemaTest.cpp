#include "pdfsettings/Schema.h"

#include "pdfsettings/Component.h"
#include "pdfsettings/Settings.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <sstream>

using namespace pdfsettings;

namespace {

std::string const kTooMany =
    ": the schema describes more than 10,000 settings, or 16 MiB of them\n";

class SchemaTest : public testing::Test {
protected:
    // The problems of a schema, a line for each: line:column message.
    std::string Problems(std::string const& text) const {
        std::string problems;
        for (Finding const& problem : Schema::Problems(text)) {
            problems += std::to_string(problem.Where()->line) + ":" +
                        std::to_string(problem.Where()->column) + " " + problem.Message() + "\n";
        }
        auto const error = support::ErrorOf([&] { Schema::Parse(text); });
        EXPECT_EQ(error.has_value(), !problems.empty());
        EXPECT_TRUE(
            !error || (error->Code() == Fault::kSchema &&
                       problems.find(error->Message() + "\n") != std::string::npos));
        return problems;
    }

    // So many structures, each of which is named by the one before under each of the keys.
    static std::string Chain(int structures, std::string const& keys) {
        std::string text = "< PDFSettings";
        for (int i = 1; i <= structures; ++i) {
            text += " < optional <";
            for (char const key : keys) {
                text += std::string(" ") + key + " S" + std::to_string(i);
            }
            text += " > >\nS" + std::to_string(i);
        }
        return text + " < optional < > > >";
    }

    // The words of text with one blank between.
    static std::string Words(std::string const& text) {
        std::istringstream stream(text);
        std::string words;
        for (std::string word; stream >> word;) {
            words += (words.empty() ? "" : " ") + word;
        }
        return words;
    }

    Component const fComponent = Component::Start();
};

} // namespace

// A text of a few lines can describe more settings than any memory holds.
TEST_F(SchemaTest, StructuresHaveLimitsOfDepthAndNumber) {
    EXPECT_EQ(Problems(Chain(99, "A")), "");
    EXPECT_EQ(
        Problems(Chain(12000, "A")), "101:1 S100: structures are nested more than 100 deep\n");
    EXPECT_EQ(Problems(Chain(12, "AB")), "");
    EXPECT_EQ(Problems(Chain(40, "AB")), "40:1 S39" + kTooMany);
}

TEST_F(SchemaTest, SettingsHaveALimitOfNumberAndSize) {
    std::string rules;
    for (int i = 0; i < 10000; ++i) {
        rules += " K" + std::to_string(i) + " T";
    }
    EXPECT_EQ(Problems("< PDFSettings < optional <" + rules + " > > T < optional < > > >"), "");
    EXPECT_EQ(
        Problems("< PDFSettings < optional <" + rules + " K T > > T < optional < > > >"),
        "1:3 PDFSettings" + kTooMany);
    std::string const half = rules.substr(0, rules.find(" K5000 "));
    auto const problems = [&](std::string const& rule, std::size_t size) {
        return Problems(
            "< PDFSettings < optional <" + half + " > >\nT < optional < A < type " + rule + " (" +
            std::string(size, 'd') + ") > > > >");
    };
    EXPECT_EQ(problems("name doc", 1000), "");
    for (char const* const rule : {"name doc", "name default", "string default"}) {
        EXPECT_EQ(problems(rule, 4000), "2:1 T" + kTooMany) << rule;
    }
}

TEST_F(SchemaTest, ProblemsHaveTheirPlacesAndAreCounted) {
    EXPECT_EQ(Problems("\n [ ]"), "2:2 expected a dictionary of structures\n");
    std::string structures;
    for (int i = 0; i < 1000; ++i) {
        structures += " T" + std::to_string(i) + " < optional < > >";
    }
    std::string const problems = Problems("< PDFSettings < optional < > >" + structures + " >");
    EXPECT_EQ(std::ranges::count(problems, '\n'), 101);
    EXPECT_TRUE(problems.ends_with("1:1 and 900 more\n"));
}

TEST_F(SchemaTest, TheStandardSchemaIsSoundAndAcceptsEveryExample) {
    Schema const& schema = Schema::Standard();
    EXPECT_EQ(schema.Text(), support::ReadBytes(PDFSETTINGS_DATA "/data/standard.schema"));
    for (char const* const name :
         {"data/screen.joboptions",
          "data/office.joboptions",
          "data/press.joboptions",
          "data/archive.joboptions"}) {
        Settings const settings = Settings::Open(std::string(PDFSETTINGS_DATA "/") + name);
        EXPECT_GT(settings.Values().size(), 70u) << name;
        EXPECT_EQ(settings.Validate().size(), 0u) << name;
        // What is written holds the same settings, and is written the same way again.
        Settings const again = Settings::Parse(settings.CanonicalText());
        EXPECT_EQ(again.Values(), settings.Values()) << name;
        EXPECT_EQ(again.CanonicalText(), again.Text()) << name;
    }
    std::size_t grouped = 0;
    for (std::string const& group : schema.Groups()) {
        grouped += schema.RulesOf(group).size();
    }
    EXPECT_EQ(grouped, schema.Rules().size());
}

TEST_F(SchemaTest, KeysMakeLabels) {
    Schema const schema =
        Schema::Parse("< PDFSettings < optional < MyRGBImage any ICCProfile any x2Y any > > >");
    EXPECT_EQ(schema.Rules()[0].Label(), "My RGB image");
    EXPECT_EQ(schema.Rules()[1].Label(), "ICC profile");
    EXPECT_EQ(schema.Rules()[2].Label(), "x2 Y");
}

// Settings, structures and groups may have the names of what is left out.
TEST_F(SchemaTest, TheTextOfItsRulesLacksOnlyWhatValidationIgnores) {
    Schema const schema = Schema::Parse(
        "< groups [ < label (One) settings [ doc ] > ] % comment\n PDFSettings <"
        " doc < type number min 1 doc (a) default 3 > label groups2 optional <"
        " default < type array of < type array count 2 of < type name in [ X Y ] doc (b) > "
        "label (c) > default [ ] > optional < type number in [ 0.1 -1e30 ] doc (d) > > >"
        " groups2 < optional < default < type string in [ (a \\051) ] default (a \\051) > > > >");
    EXPECT_EQ(
        Words(schema.RulesText()),
        "< PDFSettings < doc < type number min 1 > label groups2 optional < default < type array "
        "of < type array count 2 of < type name in [ X Y ] > > > optional < type number in [ 0.1 "
        "-1e+30 ] > > > groups2 < optional < default < type string in [ (a \\)) ] > > > >");
    Schema const standard = Schema::Parse(Schema::Standard().RulesText());
    EXPECT_EQ(standard.Rules().size(), Schema::Standard().Rules().size());
    EXPECT_LT(standard.Text().size(), Schema::Standard().Text().size() / 2);
}

TEST_F(SchemaTest, RulesAreFoundByPathsOfSettings) {
    Schema const schema = Schema::Parse("< PDFSettings < Alpha number optional <"
                                        "  List < type array of In > Part In Open dictionary > >"
                                        "  In < optional < Beta any Again In > > >");
    EXPECT_EQ(schema.Rules().size(), 8U) << "each structure once on its way";
    EXPECT_EQ(schema.Find("List/12/Beta"), schema.Find("List/*/Beta"));
    EXPECT_NE(schema.Find("List/12/Beta"), nullptr);
    EXPECT_EQ(schema.Find("List/12"), nullptr);
    Schema const digits = Schema::Parse(
        "< PDFSettings < optional < A < type array of In > > > In < optional < 0 any > > >");
    EXPECT_NE(digits.Find("A/7/0"), nullptr);
    EXPECT_EQ(digits.Find("A/7/1"), nullptr);
    for (char const* const path : {"Alpha", "List/0", "List/0/Beta", "Open/x/y", "Alpha/x"}) {
        EXPECT_FALSE(schema.IsUnknown(path)) << path;
    }
    for (char const* const path : {"alpha", "List/0/beta", "Opem/x", "0"}) {
        EXPECT_TRUE(schema.IsUnknown(path)) << path;
    }
    EXPECT_TRUE(schema.HasRulesIn("List") && schema.HasRulesIn("List/7"));
    EXPECT_FALSE(schema.HasRulesIn("Open") || schema.HasRulesIn("Alpha"));
}
