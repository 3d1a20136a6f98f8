// Sizes far beyond any real settings, on a small stack. Work with the square of the size would not
// end within the time limit of these tests.

#include "tests/support/Settings.h"
#include "tests/support/SmallStack.h"
#include "tests/support/TemporaryFolder.h"

namespace support {

namespace {

std::string const kEnd = ">> setalembicorparams\r\ntail";

} // namespace

class Sizes : public SettingsTest {
protected:
    // Reads text, writes it again and compares. The component's own layout is expected back.
    void ExpectSameText(std::string const& text) {
        OnSmallStack([&] {
            auto const settings = NewSettings(text);
            EXPECT_TRUE(settings != nullptr && Text(settings) == text);
        });
        EXPECT_TRUE(fLog.fMessages.empty());
    }
};

TEST_F(Sizes, AStringOfTenMegabytesAMillionKeysAndAMillionElements) {
    std::string string;
    string.resize(10'000'000, 's');
    ExpectSameText("<<\r\n  /A (" + string + ")\r\n" + kEnd);
    std::string keys = "<<\r\n";
    std::string elements = "<<\r\n  /A [\r\n";
    for (int number = 0; number < 1'000'000; ++number) {
        keys += "  /Key" + std::to_string(number) + " " + std::to_string(number) + "\r\n";
        elements += "    " + std::to_string(number) + "\r\n";
    }
    ExpectSameText(keys + kEnd);
    ExpectSameText(elements + "  ]\r\n" + kEnd);
}

TEST_F(Sizes, AFileOfAHundredMegabytes) {
    std::string text = "<<\r\n  /A 1\r\n" + kEnd;
    text.resize(100'000'000, 't');
    TemporaryFolder const folder;
    folder.Make("a", text);
    auto const path = NewPath((folder.Path() / "a").u16string());
    OnSmallStack([&] {
        auto const settings = Own(fNewFromFile(path, ""));
        EXPECT_EQ(nullptr, fWrite(settings, path));
        EXPECT_TRUE(ReadBytes(folder / "a") == text);
    });
    EXPECT_TRUE(fLog.fMessages.empty());
}

} // namespace support
