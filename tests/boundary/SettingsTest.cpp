// Settings objects, as a host makes and reads them.

#include "tests/support/Settings.h"

namespace support {

using SettingsObject = SettingsTest;

TEST_F(SettingsObject, SharesTheDictionaryItIsMadeFrom) {
    auto dict = NewValue<POSDict>("< A 1 >");
    auto const settings = Own(fNewFromDict(dict, "no schema"));
    EXPECT_EQ(dict, fGetSettings(settings));
    Put(dict, "B", fRuntime.Numbers().NewPOSNumber(2));
    EXPECT_EQ("<<A 1 B 2>>", Describe(settings));
    dict.reset();
    EXPECT_EQ("<<A 1 B 2>>", Describe(settings));
    EXPECT_TRUE(fLog.fMessages.empty());
}

TEST_F(SettingsObject, StandsInItsContainerUnderFixedNames) {
    auto const settings = NewSettings("<</A 1 >>setalembicorparams");
    auto const* const record = reinterpret_cast<BIBPrimaryRecord const*>(
        reinterpret_cast<char const*>(settings.get()) +
        fRuntime.Containers().GetOffsetToPrimaryInstance());
    EXPECT_STREQ("PDFSettingsImpl", record->instanceName);
    EXPECT_STREQ("PDFSettingsInterface", record->signature);
}

TEST_F(SettingsObject, IsNoneAndReportsWhatIsWrongWithoutWhatItIsMadeOf) {
    auto const notSettings = NewValue<PDFSettings>("< A 1 >");
    EXPECT_EQ(nullptr, fNewFromStream(nullptr, ""));
    EXPECT_EQ(nullptr, fNewFromDict(nullptr, ""));
    EXPECT_EQ(nullptr, fGetSettings(notSettings));
    EXPECT_EQ(
        (std::vector<std::string>{"invalid container", "invalid container", "no such instance"}),
        fLog.fMessages);
}

} // namespace support
