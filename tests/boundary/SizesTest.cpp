// Sizes far beyond any real settings, on a small stack. Work with the square of the size would not
// end within the time limit of these tests.

#include "tests/support/FaultSweep.h"
#include "tests/support/SmallStack.h"

namespace support {

class Sizes : public FaultSweepTest {
protected:
    // Reads text, writes it again and compares. The component's own layout is expected back.
    void ExpectSameText(std::string const& text) {
        OnSmallStack([&] {
            PDFSettings* const settings = NewSettings(text);
            EXPECT_TRUE(settings != nullptr && Text(settings) == text);
            Release(settings);
        });
        EXPECT_TRUE(fLog.fMessages.empty());
    }
};

TEST_F(Sizes, AStringOfTenMegabytes) {
    std::string string;
    string.resize(10'000'000, 's');
    ExpectSameText("<<\r\n  /A (" + string + ")\r\n>> setalembicorparams\r\ntail");
}

TEST_F(Sizes, AMillionKeys) {
    std::string text = "<<\r\n";
    for (int number = 0; number < 1'000'000; ++number) {
        text += "  /Key" + std::to_string(number) + " " + std::to_string(number) + "\r\n";
    }
    ExpectSameText(text + ">> setalembicorparams\r\ntail");
}

// The key as a value and as an interned text, and the value itself.
TEST_F(Sizes, AScalarTakesThreeAllocations) {
    std::string text = "<<";
    for (int number = 0; number < 10'000; ++number) {
        text += "/NewKey" + std::to_string(number) + " /some_name\n";
    }
    unsigned long const before = bibrt::CountAllocations();
    PDFSettings* const settings = NewSettings(text + ">>setalembicorparams");
    EXPECT_LE(bibrt::CountAllocations() - before, 30'100U);
    Release(settings);
}

TEST_F(Sizes, AnArrayOfAMillionElements) {
    std::string text = "<<\r\n  /A [\r\n";
    for (int number = 0; number < 1'000'000; ++number) {
        text += "    " + std::to_string(number) + "\r\n";
    }
    ExpectSameText(text + "  ]\r\n>> setalembicorparams\r\ntail");
}

TEST_F(Sizes, AFileOfAHundredMegabytes) {
    std::string text = "<<\r\n  /A 1\r\n>> setalembicorparams\r\n";
    text.resize(100'000'000, 't');
    fFolder.Make("a", text);
    OnSmallStack([&] {
        PDFSettings* const settings = fNewFromFile(fPath, "");
        AddRef(settings);
        EXPECT_EQ(nullptr, fWrite(settings, fPath));
        EXPECT_TRUE(ReadBytes(fFolder / "a") == text);
        Release(settings);
    });
    EXPECT_TRUE(fLog.fMessages.empty());
}

} // namespace support
