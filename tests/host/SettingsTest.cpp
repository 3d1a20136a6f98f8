#include "pdfsettings/Settings.h"

#include "host/detail/FilePath.h"
#include "pdfsettings/Compare.h"
#include "pdfsettings/Component.h"
#include "pdfsettings/Review.h"
#include "runtime/objects/Diagnostics.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/TemporaryFolder.h"

#include <cmath>
#include <gtest/gtest.h>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

using namespace pdfsettings;
using support::CodeOf;
using support::MessageOf;
using support::ReadBytes;

namespace {

constexpr char kText[] = "% a set\n<<\n  /A 1 % why\n  /D << /X (x) /Y 2 >>\n  /L [ 1 2 ]\n"
                         "  /Bad 2\n>> setalembicorparams\n<< >> setpagedevice\n";

class SettingsTest : public testing::Test {
protected:
    Component const fComponent = Component::Start();
    Schema const fSchema = Schema::Parse(
        "< PDFSettings < optional < A number D D L < type array of integer > Bad < type name in "
        "[ One Two ] > Def < type string default (d) > > >"
        " D < optional < X string Y < type integer min 1 max 9 > > > >");
    support::TemporaryFolder fFolder;

    // What work fails with, and what it says of it.
    template <class Work>
    static std::pair<pdfsettings::Fault, std::string> FailureOf(Work work) {
        auto const error = support::ErrorOf(work);
        EXPECT_TRUE(error);
        return error ? std::pair(error->Code(), std::string(error->what()))
                     : std::pair(Fault::kSystem, std::string());
    }

    Settings Parsed(std::string_view text = kText) const { return Settings::Parse(text, fSchema); }
};

// The findings, "PATH: message" each.
std::vector<std::string> Texts(Findings const& findings) {
    std::vector<std::string> texts;
    for (Finding const& finding : findings) {
        texts.push_back(finding.Path() + ": " + finding.Message());
    }
    return texts;
}

using Expected = std::vector<std::string>;
using Failure = std::pair<pdfsettings::Fault, std::string>;

std::string const kOld = "Bad: expected a name out of /One, /Two, found the number 2";

} // namespace

TEST_F(SettingsTest, GiveValuesByPathWithDefaults) {
    Settings const settings = Parsed();
    EXPECT_EQ(settings.Get<int>("D/Y"), 2);
    EXPECT_EQ(settings.Get<String>("D/X").text, "x");
    EXPECT_EQ(settings.Get<std::vector<int>>("L"), (std::vector<int>{1, 2}));
    EXPECT_EQ(settings.Get<String>("Def").text, "d");
    EXPECT_EQ(settings.Get<bool>("None", true), true);
    EXPECT_EQ(settings.Get<int>("A", 7), 1);
    EXPECT_TRUE(settings.Has("D/Y") && !settings.Has("Def"));
    EXPECT_EQ(settings.Tail(), "<< >> setpagedevice\n");
    EXPECT_EQ(settings.Text(), kText);
    std::pair<char const*, Failure> const kCases[] = {
        {"D/X", {Fault::kKind, "D/X: expected a whole number in range; found (x)"}},
        {"D/Z", {Fault::kNoValue, "no such key: D/Z"}},
        {"LL", {Fault::kNoValue, "no such key: LL"}},
        {"bad", {Fault::kNoValue, "no such key: bad; did you mean Bad?"}}};
    for (auto const& [path, failure] : kCases) {
        EXPECT_EQ(
            FailureOf([&, &key = path] { static_cast<void>(settings.Get<int>(key)); }), failure);
    }
    EXPECT_EQ(CodeOf([&] { static_cast<void>(settings.Get<bool>("A", true)); }), Fault::kKind);
}

TEST_F(SettingsTest, AChangeKeepsAllElseAndIsMadeWholeOrNotAtAll) {
    Settings settings = Parsed();
    Settings const copy = settings;
    auto edit = settings.Change();
    edit.Set("A", 2).Set("D/X", String{"end\\"}).Set("N/e/w", true).Remove("L/0");
    edit.SetText("D/Y", " 0x3 % hex");
    EXPECT_EQ(settings.Text(), kText) << "nothing has changed yet";
    EXPECT_EQ(Texts(edit.Check()), Expected());
    EXPECT_EQ(Texts(edit.Commit()), Expected()) << "what was wrong before refuses nothing";
    EXPECT_EQ(
        settings.Text(),
        "% a set\n<<\n  /A 2 % why\n  /D << /X (end\\\\) /Y 0x3 >>\n  /L [ 2 ]\n  /Bad 2\n"
        "  /N << /e << /w true >> >>\n>> setalembicorparams\n<< >> setpagedevice\n");
    EXPECT_EQ(settings.Get<int>("D/Y"), 3);
    EXPECT_TRUE(settings.IsModified());
    EXPECT_EQ(copy.Text(), kText);
    EXPECT_FALSE(copy.IsModified());
    EXPECT_EQ(Texts(settings.Validate()), Expected{kOld});

    std::string const before = settings.Text();
    EXPECT_EQ(
        Texts(settings.Change().Set("A", 5).Set("D/Y", 10).Set("L/0", Name{"x"}).Commit()),
        (Expected{
            "D/Y: expected an integer from 1 to 9, found 10",
            "L/0: expected an integer, found the name x"}));
    EXPECT_EQ(settings.Text(), before);
    settings.Change().Set("A", 5); // dropped
    EXPECT_EQ(settings.Text(), before);
}

TEST_F(SettingsTest, WhatCannotBeMadeLeavesTheEditAsItWas) {
    Settings settings = Parsed();
    auto edit = settings.Change();
    edit.Set("A", 3);
    EXPECT_EQ(CodeOf([&] { edit.Set("A/B", 1); }), Fault::kNoValue);
    EXPECT_EQ(CodeOf([&] { edit.Remove("D/Z"); }), Fault::kNoValue);
    EXPECT_EQ(CodeOf([&] { edit.SetText("Bad", "two"); }), Fault::kSyntax);
    Value const unwritable = Name{"a b"};
    EXPECT_EQ(CodeOf([&] { edit.AddElement("New", unwritable); }), Fault::kUnwritable);
    EXPECT_EQ(CodeOf([&] { edit.RemoveElement("New", unwritable); }), Fault::kNoValue);
    EXPECT_EQ(CodeOf([&] { unwritable.WritableText(); }), Fault::kUnwritable);
    edit.AddElement("L", 2).AddElement("L", 3).RemoveElement("L", 3);
    EXPECT_EQ(
        Texts(settings.Check("A", HUGE_VAL)),
        Expected{"A: inf cannot be written to a settings file so that it reads back as the same"});
    EXPECT_EQ(edit.Commit().size(), 0U);
    EXPECT_EQ(Compare(Document(kText), settings.Source()).size(), 1U);
}

TEST_F(SettingsTest, AChangeThatBeganBeforeAnotherIsRefused) {
    std::string const file = fFolder.Make("a", kText);
    Settings settings = Settings::Open(file, fSchema);
    auto first = settings.Change();
    auto second = settings.Change();
    EXPECT_EQ(first.Set("A", 2).Commit().size(), 0U);
    EXPECT_EQ(first.Set("A", 3).Commit().size(), 0U);
    EXPECT_EQ(CodeOf([&] { second.Set("A", 4).Commit().size(); }), Fault::kConflict);
    auto third = settings.Change();
    settings.Reload();
    EXPECT_EQ(CodeOf([&] { third.Commit().size(); }), Fault::kConflict);
    Settings moved = std::move(settings);
    auto last = moved.Change();
    Settings const again = std::move(moved);
    EXPECT_EQ(last.Set("A", 9).Commit().size(), 0U);
    EXPECT_EQ(again.Get<int>("A"), 9);
}

// Hints come with a few findings only, and make none of them new.
TEST_F(SettingsTest, OneOfManyProblemsMayBeMended) {
    std::string text = "<<";
    std::string rules;
    for (int i = 0; i < 100; ++i) {
        text += " /K" + std::to_string(i) + " /Onee";
        rules += " K" + std::to_string(i) + " < type name in [ One ] >";
    }
    Schema const schema = Schema::Parse("< PDFSettings < optional <" + rules + " > > >");
    Settings settings = Settings::Parse(text + " >> setalembicorparams", schema);
    auto const isHinted = [&] { return settings.Validate().front().Message().ends_with("?"); };
    EXPECT_FALSE(isHinted());
    EXPECT_EQ(settings.Change().Set("K0", Name{"One"}).Commit().size(), 0U);
    EXPECT_TRUE(isHinted());
    EXPECT_EQ(settings.Change().Set("K0", Name{"Onee"}).Commit().size(), 1U);
}

// What was wrong with an element is nothing new where it stands now.
TEST_F(SettingsTest, ElementsThatMoveBringNoNewFindings) {
    Settings settings = Parsed("<< /L [ 1 /x 2 /y ] >> setalembicorparams");
    auto edit = settings.Change();
    EXPECT_EQ(edit.Remove("L/0").Commit().size(), 0U);
    EXPECT_EQ(edit.Set("A", 1).Commit().size(), 0U) << "nothing moves in the second change";
    EXPECT_EQ(settings.Change().Remove("L/0").Set("L/1", Name{"z"}).Commit().size(), 1U);
    EXPECT_EQ(settings.Change().Remove("L/0").Set("L/0", Name{"x"}).Commit().size(), 1U);
}

TEST_F(SettingsTest, AFileIsBoundSavedAndComparedWithWhatWasRead) {
    std::string const file = fFolder.Make("a", kText);
    Settings settings = Settings::Open(file, fSchema);
    EXPECT_FALSE(settings.IsModified() || settings.IsStale());
    EXPECT_EQ(settings.Change().Set("A", 2).Commit().size(), 0U);
    EXPECT_TRUE(settings.IsModified());
    EXPECT_EQ(settings.Save().size(), 0U);
    EXPECT_FALSE(settings.IsModified() || settings.IsStale());
    EXPECT_EQ(ReadBytes(file), settings.Text());

    fFolder.Make("a", "<</A 9>>setalembicorparams");
    EXPECT_TRUE(settings.IsStale());
    EXPECT_EQ(
        FailureOf([&] { settings.Save(); }),
        Failure(Fault::kConflict, file + ": changed since it was read"));
    Settings const stale = settings;
    settings.Reload();
    EXPECT_EQ(settings.Get<int>("A"), 9);
    EXPECT_FALSE(settings.IsStale());
    settings = stale;
    EXPECT_EQ(settings.Save(OnConflict::kOverwrite).size(), 0U);
    EXPECT_EQ(ReadBytes(file), stale.Text());
}

TEST_F(SettingsTest, AFileIsBoundWhereItIsSavedElsewhere) {
    std::string const file = fFolder.Make("a", kText);
    Settings settings = Settings::Open(file, fSchema);
    std::string const other = fFolder.Make("b", "old");
    EXPECT_EQ(MessageOf([&] { settings.SaveAs(other); }), "the file exists already");
    EXPECT_EQ(settings.File(), file);
    settings.SaveAs(other, OnConflict::kOverwrite);
    EXPECT_EQ(settings.File(), other);
    EXPECT_EQ(ReadBytes(other), settings.Text());
    std::filesystem::remove(other);
    EXPECT_TRUE(settings.IsStale());
    EXPECT_FALSE(Parsed().IsStale());
    // What is bound is a file, not a name in whatever folder is the current one.
    std::filesystem::path const current = std::filesystem::current_path();
    std::filesystem::current_path(fFolder.Path());
    Settings opened = Settings::Open("a");
    std::filesystem::current_path(current);
    EXPECT_EQ(opened.Change().Set("A", 2).Commit().size(), 0U);
    opened.Save();
    EXPECT_EQ(ReadBytes(file), opened.Text());
}

TEST_F(SettingsTest, ChangesUnderALockAreOfItsFileAsItIs) {
    std::string const file = fFolder.Make("a", "<</A 40>>setalembicorparams");
    {
        Settings stale = Settings::Open(file, fSchema);
        fFolder.Make("a", "<</A 41>>setalembicorparams");
        FileLock other(fFolder / "b");
        EXPECT_EQ(CodeOf([&] { stale.Save(other); }), Fault::kConflict);
        FileLock held(file);
        EXPECT_EQ(CodeOf([&] { stale.Save(held); }), Fault::kConflict);
        EXPECT_EQ(stale.Save(held, OnConflict::kOverwrite).size(), 0U);
    }
    FileLock lock(fFolder / "new");
    Settings made = Settings::Open(lock);
    EXPECT_EQ(made.Change().Set("Optimize", true).Commit().size(), 0U);
    made.Save(lock);
    EXPECT_EQ(ReadBytes(fFolder / "new"), "<<\n  /Optimize true\n>> setalembicorparams\n");
}

TEST_F(SettingsTest, AFileThatCannotBeReadGivesTheReason) {
    auto const missing = support::ErrorOf([&] { Settings::Open(fFolder / "missing"); });
    ASSERT_TRUE(missing);
    EXPECT_EQ(missing->System(), std::errc::no_such_file_or_directory);
    EXPECT_EQ(missing->File(), fFolder / "missing");
}

TEST_F(SettingsTest, AreMadeOfValues) {
    Dictionary const values = Dictionary::Of(
        {{"A", 1.5}, {"D", Dictionary::Of({{"X", String{"(\\"}}})}, {"L", Array::Of({1})}});
    Settings const made = Settings::From(values, "tail", fSchema);
    EXPECT_EQ(made.Values(), values);
    EXPECT_EQ(
        made.Text(),
        "<<\n  /A 1.5\n  /D << /X (\\(\\\\) >>\n  /L [ 1 ]\n>> setalembicorparams\ntail");
    EXPECT_EQ(
        MessageOf([] {
            Settings::From(Dictionary::Of({{"A", 1}, {"B", Name{""}}}));
        }),
        "B: / cannot be written to a settings file so that it reads back as the same");
    Dictionary slashed;
    slashed.SetKey("a/b", 1);
    EXPECT_EQ(CodeOf([&] { Settings::From(slashed); }), Fault::kKey);
    EXPECT_EQ(CodeOf([&] { Settings::From(Dictionary::Of({{"AlembicorData", 1}})); }), Fault::kKey);
    Settings const reserved = Settings::Parse("<< /AlembicorData 1 >> setalembicorparams");
    EXPECT_EQ(CodeOf([&] { static_cast<void>(reserved.CanonicalText()); }), Fault::kUnwritable);
    EXPECT_FALSE(Settings(fSchema).Has("A"));
}

TEST_F(SettingsTest, AreExplainedWithoutTheElementsOfArrays) {
    Settings const settings(Schema::Parse(
        "< PDFSettings < optional < D < type array of E > > > E < optional < X any > > >"));
    EXPECT_EQ(Explain(settings).size(), 1U);
}

// The component counts only the namespaces that it validates.
TEST_F(SettingsTest, FindingsHaveThePositionsOfTheSettingsThatAreMeant) {
    Schema const schema =
        Schema::Parse("< PDFSettings < optional < OtherNamespaces < type array of T > > > "
                      "T < Must number optional < > > >");
    std::string const other = " << /Namespace [ (x) (x) (x) ] >> ";
    std::string const text =
        "<</OtherNamespaces [" + other + other + "<< /A 1 >>] >>setalembicorparams";
    Settings const settings = Settings::Parse(text, schema);
    ASSERT_EQ(settings.Validate().size(), 1U);
    Finding const finding = settings.Validate().front();
    EXPECT_EQ(finding.Path(), "OtherNamespaces/2/Must");
    EXPECT_EQ(finding.Bytes()->begin, text.find("<< /A 1")) << "where it belongs";
}

// How many single failures of memory were reported; -1 where one changed the findings.
static int CountFailures(Settings const& settings) {
    int failures = 0;
    bool isReached = true;
    for (unsigned long n = 1; isReached && failures >= 0; ++n) {
        unsigned long const start = bibrt::CountAllocations();
        bibrt::FailAllocation(n, /*andAllLater=*/false);
        try {
            failures = Texts(settings.Validate()) == Expected{kOld} ? failures : -1;
        } catch (std::bad_alloc const&) {
            ++failures;
        }
        isReached = bibrt::CountAllocations() - start >= n;
        bibrt::ResetFailures();
    }
    return failures;
}

// In a process of its own: where only a container fails, the component cannot free what was to go
// into it.
TEST_F(SettingsTest, MemoryThatRunsOutIsAlwaysBadAlloc) {
    EXPECT_EXIT(_exit(CountFailures(Parsed()) > 10 ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST(FolderPath, IsAbsoluteAndEndsInNoSlash) {
    std::string const current = std::filesystem::current_path().string();
    for (auto const& [folder, path] :
         {std::pair<std::string, std::string>("", ""),
          {"/", "/"},
          {"//", "/"},
          {"/a/b//", "/a/b"},
          {"a/", current + "/a"}}) {
        EXPECT_EQ(detail::FolderPath(folder), path) << folder;
    }
}
