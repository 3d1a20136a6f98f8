#include "RuntimeFixture.h"

#include <thread>

namespace runtimetest {
namespace {

template <class Proc>
Proc Bootstrap(char const* name) {
    return reinterpret_cast<Proc>(BIBRuntimeLookup("BIB", name, name));
}

int gSomething = 0;

class RegistryTest : public RuntimeTest {
protected:
    int Register(char const* interfaceName, char const* name, void* proc) const {
        return Bootstrap<BIBRegisterProcAddressProc>("BIBRegisterProcAddress")(
            interfaceName, name, "Proc", proc);
    }
    int Unregister(char const* interfaceName) const {
        return Bootstrap<BIBUnregisterInterfaceProc>("BIBUnregisterInterface")(interfaceName);
    }
    unsigned long* Counter() const {
        return Bootstrap<BIBGetUnregisterCountAddrProc>("BIBGetUnregisterCountAddr")();
    }
};

TEST_F(RegistryTest, FindsWhatWasRegisteredUntilItIsUnregistered) {
    ASSERT_NE(Register("Hosts", "A", &gSomething), 0);
    EXPECT_EQ(BIBRuntimeLookup("Hosts", "A", "Proc"), &gSomething);
    EXPECT_NE(Unregister("Hosts"), 0);
    EXPECT_EQ(BIBRuntimeLookup("Hosts", "A", "Proc"), nullptr);
}

TEST_F(RegistryTest, UnregisteringTakesNoOtherInterface) {
    ASSERT_NE(Register("Host", "A", &gSomething), 0);
    ASSERT_NE(Register("Hosts", "A", &gSomething), 0);
    Unregister("Host");
    EXPECT_EQ(BIBRuntimeLookup("Hosts", "A", "Proc"), &gSomething);
    Unregister("Hosts");
}

TEST_F(RegistryTest, RefusesASecondRegistrationAndMissingTexts) {
    ASSERT_NE(Register("Hosts", "A", &gSomething), 0);
    EXPECT_EQ(Register("Hosts", "A", &gSomething), 0);
    EXPECT_EQ(Register(nullptr, "B", &gSomething), 0);
    EXPECT_EQ(Register("Hosts", nullptr, &gSomething), 0);
    EXPECT_EQ(Register("Hosts", "B", nullptr), 0);
    Unregister("Hosts");
}

TEST_F(RegistryTest, RegistrationWithoutMemoryIsRefusedAndLeavesNothing) {
    bibrt::FailAllocation(1, /*andAllLater=*/true);
    EXPECT_EQ(Register("Hosts", "A", &gSomething), 0);
    bibrt::ResetFailures();
    EXPECT_EQ(BIBRuntimeLookup("Hosts", "A", "Proc"), nullptr);
}

TEST_F(RegistryTest, CounterIsNeverZeroAndMovesWithEachUnregistration) {
    unsigned long* const counter = Counter();
    unsigned long const before = *counter;
    EXPECT_NE(before, 0U);
    EXPECT_EQ(Unregister("Nowhere"), 0);
    EXPECT_EQ(*counter, before + 1);
    EXPECT_EQ(Counter(), counter);
}

TEST_F(RegistryTest, ErrorsGoToTheChannelThatWasSet) {
    std::string shown;
    auto const show = [](char const* message, void* client) {
        *static_cast<std::string*>(client) += message;
    };
    BIBRuntimeSetErrorChannel(show, &shown);
    auto const report = Bootstrap<BIBReportErrorProc>("BIBReportError");
    EXPECT_EQ(report("first;"), 1);
    EXPECT_EQ(report(nullptr), 1);
    BIBRuntimeSetErrorChannel(nullptr, nullptr);
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(report("second"), 1);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "second\n");
    EXPECT_EQ(shown, "first;");
}

TEST_F(RegistryTest, ThreadsFindWhatIsThereWhileOthersRegister) {
    ASSERT_NE(Register("Hosts", "A", &gSomething), 0);
    std::thread other([&] {
        for (int i = 0; i < 2000; ++i) {
            Register("Others", std::to_string(i).c_str(), &gSomething);
        }
        Unregister("Others");
    });
    for (int i = 0; i < 2000; ++i) {
        EXPECT_EQ(BIBRuntimeLookup("Hosts", "A", "Proc"), &gSomething);
    }
    other.join();
    Unregister("Hosts");
}

TEST_F(RegistryTest, RuntimeIsMultiThreaded) {
    EXPECT_NE(Bootstrap<BIBIsMultiThreadedProc>("BIBIsMultiThreaded")(), 0);
}

} // namespace
} // namespace runtimetest
