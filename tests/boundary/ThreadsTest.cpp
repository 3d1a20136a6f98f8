// Several threads of a host that serialises what it has to: the first calls of each kind, through
// which the component gets to know the runtime's tables, and every validation.

#include "tests/support/Settings.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Together.h"

#include <mutex>

namespace support {

class Threads : public SettingsTest {
protected:
    // Each procedure on settings that are the thread's own.
    void UseSettings(std::string const& name) {
        auto const settings = NewSettings(kText, kSchema);
        {
            std::lock_guard const guard(fValidation);
            EXPECT_NE(nullptr, Own(fIsPDFSettingsValid(settings)));
        }
        EXPECT_NE(std::string::npos, Text(settings).find("/B [\r\n    /x\r\n    (y)\r\n  ]"));
        EXPECT_NE(nullptr, Own(fNewFromDict(fGetSettings(settings), kSchema)));
        auto const path = NewPath((fFolder.Path() / name).u16string());
        EXPECT_EQ(nullptr, fWrite(settings, path));
        EXPECT_EQ(0, fIsDirty(settings));
        EXPECT_NE(nullptr, Own(fNewFromFile(path, kSchema)));
    }

    static constexpr char kText[] = "<< /A 1 /B [ /x (y) ] >>setalembicorparams tail";
    static constexpr char kSchema[] = "< PDFSettings < A number optional < B array > > >";

    TemporaryFolder fFolder;
    std::mutex fValidation;
};

TEST_F(Threads, EachUseTheirOwnSettings) {
    UseSettings("first");
    DoTogether(4, [this](int number) {
        for (int round = 0; round < 20; ++round) {
            UseSettings(std::to_string(number));
        }
    });
}

} // namespace support
