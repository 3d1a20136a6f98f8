#include "pdfsettings/Schema.h"

#include "pdfsettings/Component.h"
#include "pdfsettings/Settings.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

using namespace pdfsettings;

namespace {

std::string const kTooMany =
    ": the schema describes more than 10,000 settings, or 16 MiB of them\n";

class SchemaTest : public testing::Test {
protected:
    // The faults of a schema, a line for each: line:column message.
    std::string Faults(std::string const& text) const {
        std::string faults;
        try {
            Schema::FromText(fComponent, text);
        } catch (SchemaError const& error) {
            for (auto const& [line, column, message] : error.Faults()) {
                faults +=
                    std::to_string(line) + ":" + std::to_string(column) + " " + message + "\n";
            }
        }
        return faults;
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

    static std::string ReadFile(std::string const& name) {
        std::ifstream stream(PDFSETTINGS_DATA "/" + name);
        return std::string(std::istreambuf_iterator<char>(stream), {});
    }

    Component fComponent;
};

} // namespace

TEST_F(SchemaTest, AFaultHasItsPlaceInTheText) {
    struct {
        char const* fText;
        char const* fFaults;
    } const cases[] = {
        {"< PDFSettings < optional < A any > > >", ""},
        {"<\n  PDFSettings < optional <\n>",
         "3:2 the dictionary opened at line 2, column 15 is not closed\n"},
        {"\n [ ]", "2:2 expected a dictionary of structures\n"},
        {"\n < >", "2:2 the structure PDFSettings is missing\n"},
        {"<\n  PDFSettings < A any >\n>", "2:3 PDFSettings has no dictionary optional\n"},
        {"< PDFSettings < optional <\n A numbr\n B < type integer min x >\n> > >",
         "2:2 PDFSettings/optional/A: says numbr, which is not a kind, structure or registered "
         "check\n"
         "3:19 PDFSettings/optional/B/min: says the name x, which is not a number\n"},
    };
    for (auto const& [text, faults] : cases) {
        EXPECT_EQ(Faults(text), faults) << text;
    }
}

// A text of a few lines can describe more settings than any memory holds.
TEST_F(SchemaTest, StructuresHaveLimitsOfDepthAndNumber) {
    EXPECT_EQ(Faults(Chain(99, "A")), "");
    EXPECT_EQ(Faults(Chain(12000, "A")), "101:1 S100: structures are nested more than 100 deep\n");
    EXPECT_EQ(Faults(Chain(12, "AB")), "");
    EXPECT_EQ(Faults(Chain(40, "AB")), "40:1 S39" + kTooMany);
}

TEST_F(SchemaTest, SettingsHaveALimitOfNumberAndSize) {
    std::string rules;
    for (int i = 0; i < 10000; ++i) {
        rules += " K" + std::to_string(i) + " T";
    }
    auto const schema = [](std::string const& all, std::size_t size) {
        return "< PDFSettings < optional <" + all + " > >\nT < optional < A < type name doc (" +
               std::string(size, 'd') + ") > > > >";
    };
    EXPECT_EQ(Faults("< PDFSettings < optional <" + rules + " > > T < optional < > > >"), "");
    EXPECT_EQ(
        Faults("< PDFSettings < optional <" + rules + " K T > > T < optional < > > >"),
        "1:3 PDFSettings" + kTooMany);
    std::string const half = rules.substr(0, rules.find(" K5000 "));
    EXPECT_EQ(Faults(schema(half, 1000)), "");
    EXPECT_EQ(Faults(schema(half, 4000)), "2:1 T" + kTooMany);
    // So many bytes of a default, whatever their kind.
    for (char const* const kind : {"name", "string", "hexstring"}) {
        std::string const text = "< PDFSettings < optional <" + half +
                                 " > >\nT < optional < A < type " + kind + " default (" +
                                 std::string(4000, 'd') + ") > > > >";
        EXPECT_TRUE(Faults(text).ends_with(kTooMany)) << kind;
    }
}

TEST_F(SchemaTest, ManyFaultsAreCounted) {
    std::string structures;
    for (int i = 0; i < 10000; ++i) {
        structures += " T" + std::to_string(i) + " < optional < > >";
    }
    std::string const faults = Faults("< PDFSettings < optional < > >" + structures + " >");
    EXPECT_EQ(std::ranges::count(faults, '\n'), 101);
    EXPECT_TRUE(faults.ends_with("1:1 and 9900 more\n"));
}

TEST_F(SchemaTest, TheStandardSchemaIsSoundAndAcceptsEveryExample) {
    Schema const schema = Schema::FromText(fComponent, std::string(Schema::StandardText()));
    EXPECT_EQ(schema.Text(), ReadFile("data/standard.schema"));
    for (char const* const name :
         {"data/screen.joboptions",
          "data/office.joboptions",
          "data/press.joboptions",
          "data/archive.joboptions",
          "tests/data/printer.joboptions",
          "tests/data/screen.joboptions"}) {
        Settings const settings = Settings::FromText(fComponent, ReadFile(name), schema.Text());
        EXPECT_GT(settings.Values().Size(), 70u) << name;
        EXPECT_EQ(settings.Validate(), std::vector<Finding>()) << name;
        // What is written holds the same settings, and is written the same way again.
        Settings const again = Settings::FromText(fComponent, settings.Text());
        EXPECT_EQ(again.Values(), settings.Values()) << name;
        EXPECT_EQ(again.Text(), settings.Text()) << name;
    }
}

TEST_F(SchemaTest, TheSettingsAreListedWithAllThatTheSchemaSays) {
    Schema const schema = Schema::FromText(
        fComponent,
        "< PDFSettings < A number optional < B < type array of In count 2 doc (help) > C In > >"
        "  In < optional < X < type string in [ (a) ] default (a) > Y In"
        "    Z < type number min 1 max 2 check ImageDepthParams > > > >");
    auto const settings = schema.Settings();
    std::string keys;
    for (SettingRule const& rule : settings) {
        keys += rule.key + "=" + rule.kind + (rule.isRequired ? "! " : " ");
    }
    EXPECT_EQ(
        keys,
        "A=number! B=array B[]/X=string B[]/Y=dictionary B[]/Z=number C=dictionary C/X=string "
        "C/Y=dictionary C/Z=number ");
    EXPECT_EQ(settings[1].element, "dictionary");
    EXPECT_EQ(settings[1].count, 2.0);
    EXPECT_EQ(settings[1].help, "help");
    EXPECT_EQ(settings[2].allowed, std::vector<Value>{String{"a"}});
    EXPECT_EQ(settings[2].standard, Value(String{"a"}));
    EXPECT_EQ(settings[4].least, 1.0);
    EXPECT_EQ(settings[4].greatest, 2.0);
}
