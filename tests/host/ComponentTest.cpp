#include "host/Component.h"

#include "host/Error.h"
#include "host/Settings.h"

#include <gtest/gtest.h>
#include <optional>

using namespace pdfsettings;

namespace {

std::string StartError(std::string const& path) {
    try {
        Component const component(path);
    } catch (Error const& error) {
        return error.what();
    }
    return "started";
}

std::string const kText = "<</A 1>>setalembicorparams";

} // namespace

TEST(Component, TellsItsVersion) {
    EXPECT_EQ(Component().Version(), 0x10400);
}

TEST(Component, RunsOnceAtATime) {
    Component const running;
    EXPECT_EQ(
        StartError(Component::DefaultPath()),
        "the settings component is in use already: a process can run it only once");
    EXPECT_EQ(Settings::FromText(running, kText).Values().Size(), 1u);
}

TEST(Component, MayBeStartedAgain) {
    for (int round = 0; round < 3; ++round) {
        Component const component;
        EXPECT_EQ(Settings::FromText(component, kText).Values().Size(), 1u) << round;
    }
}

TEST(Component, RunsUntilTheLastSettingsAreGone) {
    std::optional<Settings> settings;
    {
        Component const component;
        settings = Settings::FromText(component, kText);
    }
    EXPECT_EQ(settings->Values().Size(), 1u);
    EXPECT_NE(StartError(Component::DefaultPath()), "started");
    settings.reset();
    EXPECT_EQ(StartError(Component::DefaultPath()), "started");
}

TEST(Component, AFileThatIsNoComponentIsRefused) {
    struct {
        char const* fPath;
        char const* fMessage;
    } const cases[] = {
        {"/no/such/file.so", "cannot load the settings component: /no/such/file.so: "},
        {"/dev/null", "cannot load the settings component: /dev/null: "},
        {"libm.so.6", "libm.so.6 is no settings component: it has no PDFSettingsTerminate"},
    };
    for (auto const& [path, message] : cases) {
        std::string const error = StartError(path);
        EXPECT_EQ(error.substr(0, std::string(message).size()), message);
    }
    EXPECT_EQ(StartError(Component::DefaultPath()), "started");
}
