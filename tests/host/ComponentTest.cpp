#include "pdfsettings/Component.h"

#include "api/BIBRuntime.h"
#include "api/PDFSettings.h"
#include "host/detail/FilePath.h"
#include "pdfsettings/Error.h"
#include "pdfsettings/RawAccess.h"
#include "pdfsettings/Settings.h"
#include "runtime/objects/Diagnostics.h"

#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
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

// What is destroyed last in a program may use its settings once more.
struct Last {
    ~Last() {
        try {
            fSettings->Text();
            std::fputs("used", stderr);
        } catch (Error const& error) {
            std::fputs(error.what(), stderr);
        }
    }

    std::optional<Component> fComponent;
    std::optional<Settings> fSettings;
};

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

TEST(Component, LeavesWhatAnotherHostStarted) {
    void* const file = dlopen(Component::DefaultPath().c_str(), RTLD_NOW | RTLD_LOCAL);
    auto const find = [file](char const* name) { return dlsym(file, name); };
    auto const initialize =
        reinterpret_cast<decltype(&PDFSettingsInitialize)>(find("PDFSettingsInitialize"));
    auto const terminate =
        reinterpret_cast<decltype(&PDFSettingsTerminate)>(find("PDFSettingsTerminate"));
    ASSERT_EQ(1, initialize(&BIBRuntimeLookup));
    EXPECT_EQ(
        StartError(Component::DefaultPath()),
        "the settings component is in use already: a process can run it only once");
    EXPECT_NE(
        nullptr, BIBRuntimeLookup("PDFSettingsInterface", "IsDirty", "PDFSettingsIsDirtyProc"));
    terminate();
    dlclose(file);
    EXPECT_EQ(StartError(Component::DefaultPath()), "started");
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

// The component is loaded after the object is made, and so its own static objects end before.
TEST(ComponentDeathTest, StopsBeforeTheProgramHasEnded) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            static Last last;
            last.fComponent.emplace();
            last.fSettings = Settings::FromText(*last.fComponent, kText);
            std::exit(0);
        },
        testing::ExitedWithCode(0),
        "the settings component has stopped: the program is ending");
}

TEST(Component, StartsWholeOrNotAtAll) {
    bibrt::LiveCounts const live = bibrt::CountLive();
    int failures = 0;
    for (bool const andAllLater : {true, false}) {
        bool isReached = true;
        for (unsigned long n = 1; isReached; ++n) {
            unsigned long const start = bibrt::CountAllocations();
            bibrt::FailAllocation(n, andAllLater);
            failures += StartError(Component::DefaultPath()) == "started" ? 0 : 1;
            isReached = bibrt::CountAllocations() - start >= n;
            bibrt::ResetFailures();
            EXPECT_EQ(live, bibrt::CountLive()) << n;
        }
    }
    EXPECT_GT(failures, 10);
    EXPECT_EQ("started", StartError(Component::DefaultPath()));
}

TEST(Component, GivesTheErrorChannelBack) {
    auto const report = reinterpret_cast<BIBReportErrorProc>(
        BIBRuntimeLookup("BIB", "BIBReportError", "BIBReportError"));
    testing::internal::CaptureStderr();
    {
        Component const component;
        report("while it runs");
    }
    report("afterwards");
    std::string const written = testing::internal::GetCapturedStderr();
    EXPECT_EQ(written.find("while it runs"), std::string::npos);
    EXPECT_NE(written.find("afterwards"), std::string::npos);
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

TEST(RawAccess, GivesTheTablesAndTheObjectAndKeepsTheComponentRunning) {
    std::optional<Component> component(std::in_place);
    std::optional<Settings> settings(Settings::FromText(*component, kText));
    RawAccess const raw(*component);
    RawAccess const again(*component);
    auto const isDirty = reinterpret_cast<PDFSettingsIsDirtyProc>(
        raw.Lookup()("PDFSettingsInterface", "IsDirty", "PDFSettingsIsDirtyProc"));
    EXPECT_EQ(1, isDirty(again.Object(*settings))) << "bound to no file";
    EXPECT_EQ(settings->Text().substr(0, 2), "<<") << "the API goes on working";

    settings.reset();
    component.reset();
    EXPECT_NE(
        nullptr,
        raw.Lookup()(
            "PDFSettingsStatics", "GetListofPDFSettings", "PDFSettingsGetListofPDFSettingsProc"));
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
