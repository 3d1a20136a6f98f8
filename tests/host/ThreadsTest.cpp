#include "api/BIBRuntime.h"
#include "pdfsettings/Component.h"
#include "pdfsettings/Schema.h"
#include "pdfsettings/Settings.h"
#include "pdfsettings/SettingsList.h"
#include "pdfsettings/raw/RawAccess.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Together.h"

#include <cstdlib>
#include <gtest/gtest.h>

using namespace pdfsettings;
using support::TemporaryFolder;

namespace {

constexpr int kThreads = 4;

// Calls work with the number of each thread, twenty times on each.
template <class Work>
void DoOften(Work work) {
    support::DoTogether(kThreads, [&](int number) {
        for (int round = 0; round < 20; ++round) {
            work(number);
        }
    });
}

Schema const& SmallSchema() {
    static Schema const kSchema =
        Schema::Parse("< PDFSettings < A number optional < B array > > >");
    return kSchema;
}

std::string TextWith(int number) {
    return "<</A " + std::to_string(number) + " /B [ /x (y) ] >>setalembicorparams";
}

// The whole way of one file, and what can go wrong on it.
void UseSettings(std::string const& path, int number) {
    Settings settings = Settings::Parse(TextWith(number), SmallSchema());
    EXPECT_EQ(number, settings.Get<int>("A"));
    EXPECT_TRUE(settings.Validate().empty());
    EXPECT_EQ(1U, settings.Change().Set("A", Array()).Commit().size());
    EXPECT_TRUE(settings.Change().Set("A", number + 0.5).Commit().empty());
    settings.SaveAs(path, OnConflict::kOverwrite);
    EXPECT_FALSE(settings.IsStale());
    EXPECT_EQ(number + 0.5, Settings::Open(path).Get<double>("A"));
    EXPECT_EQ(Fault::kSyntax, support::CodeOf([&] { Settings::Parse("<</A"); }));
    EXPECT_EQ(Fault::kSchema, support::CodeOf([&] { Schema::Parse("<"); }));
    EXPECT_NE("", UserFolder());
    EXPECT_LE(2U, List().size());
}

class Threads : public testing::Test {
protected:
    TemporaryFolder fFolder;
    support::EnvironmentVariable fHome{"HOME", fFolder.Path().c_str()};
    support::EnvironmentVariable fData{"XDG_DATA_HOME", nullptr};
    support::EnvironmentVariable fConfig{"XDG_CONFIG_HOME", nullptr};
};

} // namespace

TEST_F(Threads, EachUseTheirOwnSettings) {
    Component const component = Component::Start();
    std::filesystem::create_directories(UserFolder());
    for (char const* const name : {"/a.joboptions", "/b.joboptions"}) {
        SaveSafely(UserFolder().string() + name, "x");
    }
    DoOften([&](int number) { UseSettings(fFolder / std::to_string(number), number); });
}

TEST_F(Threads, ReadTheSameSettingsAndValues) {
    Component const component = Component::Start();
    Settings const settings = Settings::Parse(TextWith(7), SmallSchema());
    DoOften([&](int number) {
        Settings copy = settings;
        Dictionary values = settings.Values();
        values.Set("B/0", number);
        EXPECT_EQ(values.Find("B/0")->As<int>(), number);
        EXPECT_TRUE(copy.Change().Set("A", number).Commit().empty());
        EXPECT_EQ(copy.Get<int>("A"), number);
        EXPECT_EQ(settings.Get<int>("A"), 7);
        EXPECT_EQ(settings.Values().Find("B/0")->As<Name>().text, "x");
        EXPECT_TRUE(settings.Validate().empty());
        EXPECT_FALSE(settings.CanonicalText().empty());
    });
}

// One of them at a time: the others get an error.
TEST_F(Threads, StartAndStopTheComponent) {
    DoOften([](int number) {
        auto const code = support::CodeOf([number] {
            Component const component = Component::Start();
            EXPECT_TRUE(Settings::Parse(TextWith(number), SmallSchema()).Validate().empty());
        });
        EXPECT_TRUE(!code || code == Fault::kInUse);
    });
}

// A host takes the lock around what it does while this library starts its component. In a process
// of its own, where it runs until the end.
TEST(ThreadsDeathTest, ShareTheLockWithAHost) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    auto const useTogether = [] {
        support::DoTogether(kThreads, [](int number) {
            number == 0 ? BIBRuntimeLockCalls() : static_cast<void>(number);
            Settings::Parse(TextWith(1), SmallSchema()).Validate();
            number == 0 ? BIBRuntimeUnlockCalls() : static_cast<void>(number);
        });
        std::exit(0);
    };
    EXPECT_EXIT(useTogether(), testing::ExitedWithCode(0), "");
}

// What takes no lock must go on while another thread has the component.
TEST_F(Threads, ReadWhileTheComponentIsInUse) {
    Component const component = Component::Start();
    RawAccess const raw;
    support::DoTogether(kThreads, [&](int number) {
        Settings settings = Settings::Parse(TextWith(number), SmallSchema());
        settings.SaveAs(fFolder / std::to_string(number));
        EXPECT_FALSE(settings.IsStale());
        settings.Change().Set("A", 1).Remove("B");
        EXPECT_EQ(Schema::Parse(SmallSchema().Text()).Rules().size(), 2U);
    });
}
