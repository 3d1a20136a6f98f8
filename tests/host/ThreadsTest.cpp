#include "pdfsettings/Component.h"
#include "pdfsettings/Error.h"
#include "pdfsettings/Schema.h"
#include "pdfsettings/Settings.h"
#include "pdfsettings/SettingsList.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Together.h"

#include <gtest/gtest.h>

using namespace pdfsettings;
using support::TemporaryFolder;

namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 20;

constexpr char kSchema[] = "< PDFSettings < A number optional < B array > > >";

std::string TextWith(int number) {
    return "<</A " + std::to_string(number) + " /B [ /x (y) ] >>setalembicorparams";
}

Dictionary OneEntry(std::string const& key, Value value) {
    Dictionary dictionary;
    dictionary.Set(key, std::move(value));
    return dictionary;
}

double NumberIn(Settings const& settings) {
    return *settings.Values().Get("A")->If<double>();
}

// What work throws; nothing for success.
template <class Work>
std::string MessageOf(Work work) {
    try {
        work();
    } catch (Error const& error) {
        return error.what();
    }
    return "";
}

// Does nothing where another thread runs the component.
void UseComponentIfFree(int number) {
    std::string const message = MessageOf([&] {
        Component const component;
        EXPECT_EQ(number, NumberIn(Settings::FromText(component, TextWith(number))));
    });
    EXPECT_TRUE(message.empty() || message.find("in use already") != std::string::npos) << message;
}

// The whole way of one file, and what can go wrong on it.
void UseSettings(Component const& component, std::string const& path, int number) {
    Settings settings = Settings::FromText(component, TextWith(number), kSchema);
    EXPECT_EQ(number, NumberIn(settings));
    EXPECT_TRUE(settings.Validate().empty());
    EXPECT_EQ(1U, settings.Set(OneEntry("A", Array())).size());
    EXPECT_TRUE(settings.Set(OneEntry("A", number + 0.5)).empty());
    settings.Write(path);
    EXPECT_FALSE(settings.IsDirty());
    EXPECT_EQ(number + 0.5, NumberIn(Settings::FromFile(component, path)));
    EXPECT_NE("", MessageOf([&] { Settings::FromText(component, "<</A"); }));
    EXPECT_NE("", MessageOf([&] { Schema::FromText(component, "<"); }));
    EXPECT_EQ("", MessageOf([&] { Schema::FromText(component, kSchema); }));
    EXPECT_EQ(
        number, NumberIn(Settings::FromValues(component, OneEntry("A", double(number)), kSchema)));
    EXPECT_NE("", SettingsList::UserFolder(component));
    SettingsList::Read(component);
}

} // namespace

TEST(Threads, EachUseTheirOwnSettingsOfOneComponent) {
    TemporaryFolder const folder;
    support::EnvironmentVariable const home("HOME", folder.Path().c_str());
    support::EnvironmentVariable const data("XDG_DATA_HOME", nullptr);
    support::EnvironmentVariable const config("XDG_CONFIG_HOME", nullptr);
    Component const component;
    support::DoTogether(kThreads, [&](int number) {
        for (int round = 0; round < kRounds; ++round) {
            UseSettings(component, folder / std::to_string(number), number);
        }
    });
}

TEST(Threads, MayShareSettings) {
    TemporaryFolder const folder;
    Component const component;
    Settings settings = Settings::FromText(component, TextWith(0), kSchema);
    support::DoTogether(kThreads, [&](int number) {
        for (int round = 0; round < kRounds; ++round) {
            EXPECT_TRUE(settings.Set(OneEntry("A", double(number))).empty());
            double const found = NumberIn(settings);
            EXPECT_TRUE(found >= 0 && found < kThreads) << found;
            EXPECT_NE(std::string::npos, settings.Text().find("/B"));
            settings.Write(folder / std::to_string(number));
            settings.IsDirty();
        }
    });
}

// One of them at a time: the others are told so.
TEST(Threads, StartAndStopTheComponent) {
    support::DoTogether(kThreads, [](int number) {
        for (int round = 0; round < kRounds; ++round) {
            UseComponentIfFree(number);
        }
    });
}
