// Settings objects, as a host makes and reads them.

#include "tests/support/Settings.h"

namespace support {

class SettingsObject : public SettingsTest {
protected:
    long CountOf(void const* container) const {
        return *fRuntime.Containers().DebugGetRefCountAddr(
            static_cast<BIBContainer const*>(container));
    }
};

TEST_F(SettingsObject, SharesTheDictionaryItIsMadeFrom) {
    POSDict* const dict = NewValue<POSDict>("< A 1 >");
    PDFSettings* const settings = fNewFromDict(dict, "no schema");
    EXPECT_EQ(0, CountOf(settings));
    AddRef(settings);
    EXPECT_EQ(2, CountOf(dict));
    EXPECT_EQ(dict, fGetSettings(settings));
    EXPECT_EQ(2, CountOf(dict));
    Put(dict, "B", fRuntime.Numbers().NewPOSNumber(2));
    EXPECT_EQ("<<A 1 B 2>>", Describe(settings));
    Release(dict);
    EXPECT_EQ("<<A 1 B 2>>", Describe(settings));
    Release(settings);
    EXPECT_TRUE(fLog.fMessages.empty());
}

TEST_F(SettingsObject, StandsInItsContainerUnderFixedNames) {
    PDFSettings* const settings = NewSettings("<</A 1 >>setalembicorparams");
    auto const* const record = reinterpret_cast<BIBPrimaryRecord const*>(
        reinterpret_cast<char const*>(settings) +
        fRuntime.Containers().GetOffsetToPrimaryInstance());
    EXPECT_STREQ("PDFSettingsImpl", record->instanceName);
    EXPECT_STREQ("PDFSettingsInterface", record->signature);
    Release(settings);
}

TEST_F(SettingsObject, KeepsItsStreamAlive) {
    BIBPositionableStream* const stream = NewStream("<</A 1 >>setalembicorparams");
    PDFSettings* const settings = fNewFromStream(stream, "< a schema that does not parse");
    AddRef(settings);
    EXPECT_EQ(2, CountOf(stream));
    Release(stream);
    EXPECT_EQ(1, CountOf(stream));
    EXPECT_EQ("<<A 1>>", Describe(settings));
    Release(settings);
}

TEST_F(SettingsObject, IsNoneAndReportsWhatIsWrongWithoutWhatItIsMadeOf) {
    auto* const notSettings = NewValue<PDFSettings>("< A 1 >");
    EXPECT_EQ(nullptr, fNewFromStream(nullptr, ""));
    EXPECT_EQ(nullptr, fNewFromDict(nullptr, ""));
    EXPECT_EQ(nullptr, fGetSettings(notSettings));
    EXPECT_EQ(
        (std::vector<std::string>{"invalid container", "invalid container", "no such instance"}),
        fLog.fMessages);
    Release(notSettings);
}

} // namespace support
