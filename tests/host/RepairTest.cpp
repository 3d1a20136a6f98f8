#include "pdfsettings/Repair.h"

#include "pdfsettings/Component.h"
#include "pdfsettings/Review.h"

#include <gtest/gtest.h>
#include <string>

using namespace pdfsettings;

namespace {

std::string Settled(std::string const& settings) {
    return "<< " + settings + " >> setalembicorparams\n";
}

// The repairs, each with its place.
std::string Reported(RepairedDocument const& repaired) {
    std::string reported;
    for (Finding const& repair : repaired.repairs) {
        reported += std::to_string(repair.Where()->line) + ":" +
                    std::to_string(repair.Where()->column) + " " + repair.Message() + " [" +
                    repair.Id() + "]\n";
    }
    return reported;
}

std::string Utf16(std::string const& text, bool isBigEndian, bool isMarked) {
    std::string wide = !isMarked ? "" : isBigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (char const c : text) {
        wide += isBigEndian ? std::string{'\0', c} : std::string{c, '\0'};
    }
    return wide;
}

class RepairTest : public testing::Test {
protected:
    Component const fComponent = Component::Start();
};

} // namespace

TEST_F(RepairTest, WhatHasOneMeaningIsWrittenAndReported) {
    std::string const rest = "/Optimize true";
    struct Row {
        std::string fBefore;
        std::string fAfter;
        std::string fReported;
    };
    for (auto const& [before, after, reported] : {
             Row{"\xEF\xBB\xBF" + Settled(rest),
                 Settled(rest),
                 "1:1 removed the byte order mark [encoding]\n"},
             {Settled("/A 1\n/EmbedAllFonts TRUE /Optimize False"),
              Settled("/A 1\n/EmbedAllFonts true /Optimize false"),
              "2:16 wrote true for TRUE [unknown-value]\n"
              "2:31 wrote false for False [unknown-value]\n"},
             {Settled("EmbedAllFonts true\n/NeverEmbed [ /Arial Courier ] /UserUnit 1,5"),
              Settled("/EmbedAllFonts true\n/NeverEmbed [ /Arial /Courier ] /UserUnit 1.5"),
              "1:4 wrote /EmbedAllFonts for EmbedAllFonts [stray]\n"
              "2:22 wrote /Courier for Courier [unknown-value]\n"
              "2:42 wrote 1.5 for 1,5 [stuck]\n"},
             {Settled("/ColorImageDict << /QFactor .5 >> /ImageMemory +7"),
              Settled("/ColorImageDict << /QFactor 0.5 >> /ImageMemory 7"),
              "1:32 wrote 0.5 for .5 [unknown-value]\n1:51 wrote 7 for +7 [unknown-value]\n"},
             {"<< /A (x)\r\n/D << /E 1 >> >>\r\n",
              "<< /A (x)\r\n/D << /E 1 >> >> setalembicorparams\r\n",
              "2:17 added setalembicorparams at the end [keyword]\n"},
             {"<< /A (x) >",
              "<< /A (x) >> setalembicorparams\n",
              "1:12 added > setalembicorparams at the end [unclosed]\n"},
             {"<< /A (x) >> setalembic",
              "<< /A (x) >> setalembicorparams\n",
              "1:24 added orparams at the end [keyword]\n"},
             {"<< /D << /E 1 >> >>\tset\r",
              "<< /D << /E 1 >> >>\tsetalembicorparams\r",
              "1:24 added alembicorparams at the end [keyword]\n"},
             {Settled("/EmbedAllFonts TRUE /A 1 /A 2"),
              Settled("/EmbedAllFonts true /A 1 /A 2"),
              "1:19 wrote true for TRUE [unknown-value]\n"},
         }) {
        auto const repaired = Repair(Document(before));
        EXPECT_EQ(repaired.document.Text(), after) << before;
        EXPECT_EQ(Reported(repaired), reported);
        EXPECT_TRUE(Repair(repaired.document).repairs.empty());
    }
}

TEST_F(RepairTest, WhatMayMeanSomethingElseStays) {
    for (std::string const& text :
         {Settled("/ColorImageDownsampleThreshold 1,200"),
          Settled("/ColorImageDict << /HSamples [ 1,5 1 1 1 ] >>"),
          Settled("/ImageMemory 1,5"),
          Settled("/ColorImageDict << /QFactor .5x >>"),
          Settled("/EndPage +-1 /ImageMemory +"),
          Settled("/Unknown TRUE"),
          Settled("/Unknown 1,5"),
          Settled("/CannotEmbedFontPolicy Warnin"),
          Settled("EmbedAllFonts 7 /Optimize true"),
          Settled("EmbedAllFonts true /EmbedAllFonts false"),
          Settled("/Optimize true Unknown 1 /A 1"),
          Settled("/A 1 x % /EmbedAllFonts TRUE\n/B 2"),
          Settled("/Description (Uses (all) EmbedAllFonts true /x) /B 2"),
          Settled("/A 1 NeverEmbed [ 7 ] /C 2"),
          Settled("/A 1 NeverEmbed [ /B 2 ] /C 3"),
          Settled("/A 1 ColorImageDict << /QFactor 99 /Blend 1 >> /C 3"),
          Settled("/CalRGBProfile sRGB IEC61966-2.1"),
          Settled("/PSPageOptions [ Foo ]"),
          Settled("/NeverEmbed [ Arial, ]"),
          Settled("/NeverEmbed [ null ]"),
          Settled("/Optimize TRUE false /B 1"),
          Settled("/UserUnit 010,5 /EndPage +010"),
          Settled("/A 1 junk") +
              "<< /B 1 EmbedAllFonts true /ImageMemory 1,0 /C 2 >> setpagedevice",
          std::string(
              "<< /NeverEmbed [ /Arial\n/CannotEmbedFontPolicy Warning\n>> setalembicorparams"),
          std::string("<< /A << /B 1 >> setalembicorparams\n<< /C [ 600 600 ] >> set"),
          std::string("\xEF\xBB\xBF\0<<", 6),
          std::string("\xFF\xFE\0\0<\0\0\0", 8),
          "\xEF\xBB\xBF\xEF\xBB\xBF" + Settled("/A 1"),
          std::string("<< /A <FEFF>"),
          std::string("<< /A [ (x) ]\n"),
          std::string("<< /ColorImageDict << /QFactor 1 >>\n"),
          std::string("<< /Optimize true"),
          std::string("<< /ImageMemory 10"),
          std::string("<< /ColorImageDict << /QFactor 1 /Optimize true >>\n"),
          std::string("<< /ColorImageDict << /QFactor 1 /Unknown true >>\n"),
          std::string("<< /ColorImageDict << /QFactor 1\n"),
          std::string("<< /NeverEmbed [ /Arial\n"),
          std::string("<< /Optimize true >> setpagedevice\n"),
          std::string("\xFF\xFE<"),
          Utf16(Settled("/A (\xE4)"), /*isBigEndian=*/false, /*isMarked=*/true),
          std::string()}) {
        auto const repaired = Repair(Document(text));
        EXPECT_EQ(repaired.document.Text(), text);
        EXPECT_EQ(Reported(repaired), "");
    }
}

TEST_F(RepairTest, ASchemaThatAllowsTwoReadingsDecidesNothing) {
    Schema const schema = Schema::Parse(
        "< PDFSettings < optional < A any L array B boolean N < type array of number > "
        "(\\001) integer M name > > >");
    for (char const* const text : {"/N [ 1,5 2 ]", "/A Word", "/L [ Word ]"}) {
        EXPECT_EQ(Reported(Repair(Document(Settled(text)), schema)), "") << text;
    }
    // Another entry would be lost, or the message of the schema would name another path.
    EXPECT_EQ(Reported(Repair(Document(Settled("/B 1 M /B true")), schema)), "");
    EXPECT_EQ(Reported(Repair(Document(Settled("/\001 1,5")), schema)), "");
    EXPECT_EQ(
        Reported(Repair(Document(Settled("/B TRUE")), schema)),
        "1:7 wrote true for TRUE [unknown-value]\n");
}

TEST_F(RepairTest, AFileOfNothingButMistakesIsRepairedInSeveralCalls) {
    std::size_t const kWords = 5000;
    std::string words;
    for (std::size_t i = 0; i < kWords; ++i) {
        words += " x";
    }
    auto const first = Repair(Document(Settled("/NeverEmbed [" + words + " ]")));
    EXPECT_GT(first.repairs.size(), 10U);
    EXPECT_LT(first.repairs.size(), 200U); // each reads 10 KB again, of 1 MB that may be read
    EXPECT_GT(Repair(first.document).repairs.size(), 10U);
}

TEST_F(RepairTest, TextInUtf16IsConvertedWhereItsValuesAreAscii) {
    std::string const text = Settled("/EmbedAllFonts True");
    for (bool const isBigEndian : {false, true}) {
        for (bool const isMarked : {false, true}) {
            auto const repaired = Repair(Document(Utf16(text, isBigEndian, isMarked)));
            EXPECT_EQ(repaired.document.Text(), Settled("/EmbedAllFonts true"));
            EXPECT_EQ(
                Reported(repaired),
                "1:1 converted UTF-16 to UTF-8 [encoding]\n"
                "1:19 wrote true for True [unknown-value]\n");
        }
    }
}

namespace {

// A text with a mistake at an entry; the same text where none fits it.
std::string Damaged(Document const& document, DocumentEntry const& entry) {
    std::string text = document.Text();
    std::string const value = text.substr(entry.value.begin, entry.value.Size());
    std::size_t const point = value.find('.');
    if (value == "true" || value == "false") {
        text[entry.value.begin] = value == "true" ? 'T' : 'F';
    } else if (value.starts_with('/')) {
        text.erase(entry.value.begin, 1);
    } else if (point != std::string::npos && value.front() != '(') {
        text[entry.value.begin + point] = ',';
    } else if (entry.depth == 0) {
        text.erase(entry.key.begin, 1);
    }
    return text;
}

} // namespace

TEST_F(RepairTest, OfFilesWithAMistakeEachIsMadeAsItWasOrStays) {
    int repaired = 0;
    int mistakes = 0;
    for (std::string const name : {"press", "archive", "office", "screen"}) {
        Document const whole = OpenDocument(PDFSETTINGS_DATA "/data/" + name + ".joboptions");
        for (DocumentEntry const& entry : whole.Entries()) {
            std::string const text = Damaged(whole, entry);
            std::string const result = Repair(Document(text)).document.Text();
            EXPECT_TRUE(result == text || result == whole.Text()) << result;
            mistakes += text != whole.Text() ? 1 : 0;
            repaired += text != whole.Text() && result == whole.Text() ? 1 : 0;
        }
    }
    EXPECT_GT(repaired, mistakes * 3 / 4) << mistakes;
}
