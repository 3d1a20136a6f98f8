// Load, start, stop and unload, as a host does it.

#include "tests/support/Component.h"
#include "runtime/objects/Diagnostics.h"
#include "tests/support/LookupDouble.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

namespace support {

namespace {

std::vector<std::string> gRegistered; // each interface once
std::vector<std::string> gStopped;    // the steps of a stop

// A procedure of the runtime's bootstrap.
template <class Proc>
Proc Bootstrap(char const* name) {
    return reinterpret_cast<Proc>(BIBRuntimeLookup("BIB", name, name));
}

int RecordRegister(
    char const* interfaceName, char const* procName, char const* procType, void* proc) {
    if (gRegistered.empty() || gRegistered.back() != interfaceName) {
        gRegistered.emplace_back(interfaceName);
    }
    return Bootstrap<BIBRegisterProcAddressProc>("BIBRegisterProcAddress")(
        interfaceName, procName, procType, proc);
}

int RecordUnregister(char const* interfaceName) {
    gStopped.emplace_back(interfaceName);
    return 1;
}

void RecordRelease(BIBError* error) {
    gStopped.emplace_back("Release");
    reinterpret_cast<BIBErrorReleaseProc>(
        BIBRuntimeLookup("BIBErrorInterface", "Release", "BIBErrorReleaseProc"))(error);
}

int ThrowFromUnregister(char const* /*interfaceName*/) {
    throw 1;
}

void UnregisterAll() {
    auto const unregister = Bootstrap<BIBUnregisterInterfaceProc>("BIBUnregisterInterface");
    unregister("PDFSettingsStatics");
    unregister("PDFSettingsInterface");
}

void* FindNewFromDict() {
    return BIBRuntimeLookup("PDFSettingsInterface", "NewFromDict", "PDFSettingsNewFromDictProc");
}

constexpr std::size_t kBootstrap = 5; // rows

} // namespace

TEST(Component, TellsItsVersionInEveryStateStartsAndStopsOnceAndGoes) {
    {
        Component const component;
        ASSERT_TRUE(component.IsLoaded());
        EXPECT_EQ(66560, component.GetVersion());
        EXPECT_EQ(1, component.Initialize(&BIBRuntimeLookup));
        EXPECT_EQ(0, component.Initialize(&BIBRuntimeLookup));
        EXPECT_EQ(66560, component.GetVersion());
        EXPECT_NE(nullptr, FindNewFromDict());
        component.Terminate();
        EXPECT_EQ(nullptr, FindNewFromDict());
        component.Terminate();
        EXPECT_EQ(66560, component.GetVersion());
        EXPECT_EQ(1, component.Initialize(&BIBRuntimeLookup)) << "it can start again";
        component.Terminate();
    }
    EXPECT_EQ(nullptr, dlopen(PDFSETTINGS_COMPONENT, RTLD_NOW | RTLD_NOLOAD)) << "it is gone";
}

TEST(Component, LooksUpTheBootstrapFirstAndUnregistersInOrder) {
    LookupDouble lookup;
    lookup.Replace("BIB.BIBRegisterProcAddress", &RecordRegister);
    lookup.Replace("BIB.BIBUnregisterInterface", &RecordUnregister);
    gRegistered.clear();
    lookup.Replace("BIBErrorInterface.Release", &RecordRelease);
    Component const component;
    EXPECT_EQ(1, component.Initialize(&LookupDouble::Lookup));
    ASSERT_GT(lookup.fAsked.size(), kBootstrap);
    EXPECT_TRUE(lookup.fAsked[kBootstrap - 1].starts_with("BIB."));
    EXPECT_EQ("BIBContainerInterface.GetOffsetToPrimaryInstance", lookup.fAsked[kBootstrap]);
    EXPECT_EQ(
        (std::vector<std::string>{"PDFSettingsStatics", "PDFSettingsInterface"}), gRegistered);
    gStopped.clear();
    component.Terminate();
    gStopped.resize(4);
    EXPECT_EQ(
        (std::vector<std::string>{
            "PDFSettingsStatics",
            "PDFSettingsInterface",
            "PDFSettingsVirtualInterface",
            "Release"}),
        gStopped);
    UnregisterAll();
}

TEST(Component, EndsWhatAStopThrows) {
    LookupDouble lookup;
    lookup.Replace("BIB.BIBUnregisterInterface", &ThrowFromUnregister);
    Component const component;
    EXPECT_EQ(1, component.Initialize(&LookupDouble::Lookup));
    component.Terminate();
    EXPECT_EQ(0, component.Initialize(nullptr));
    UnregisterAll();
}

TEST(Component, StaysStoppedWithoutALookup) {
    LookupDouble const lookup;
    { // one that is stopped without a start
        Component const component;
        component.Terminate();
    }
    Component const component;
    EXPECT_EQ(0, component.Initialize(nullptr));
    EXPECT_EQ(0, component.Initialize(&LookupDouble::Lookup));
    EXPECT_TRUE(lookup.fAsked.empty());
}

// The kit takes away the rows of the tables.
TEST(Component, FailsToStartWithoutARowOfTheBootstrap) {
    for (char const* const row :
         {"RegisterProcAddress",
          "UnregisterInterface",
          "GetUnregisterCountAddr",
          "IsMultiThreaded",
          "ReportError"}) {
        LookupDouble lookup;
        lookup.Hide(std::string("BIB.BIB") + row);
        EXPECT_EQ(0, Component().Initialize(&LookupDouble::Lookup)) << row;
    }
}

TEST(Component, FailsToStartWhereARowIsTaken) {
    auto const take = Bootstrap<BIBRegisterProcAddressProc>("BIBRegisterProcAddress");
    void* const own = reinterpret_cast<void*>(&RecordUnregister);
    EXPECT_NE(0, take("PDFSettingsInterface", "NewFromDict", "PDFSettingsNewFromDictProc", own));
    Component const component;
    EXPECT_EQ(0, component.Initialize(&BIBRuntimeLookup));
    EXPECT_EQ(own, FindNewFromDict());
    component.Terminate();
    EXPECT_EQ(nullptr, FindNewFromDict());
}

} // namespace support
