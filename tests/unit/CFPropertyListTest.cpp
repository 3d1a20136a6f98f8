#include "platform/CFPropertyList.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace {

using namespace std::string_literals;

struct Release {
    void operator()(void const* object) const { CFRelease(object); }
};
using Held = std::unique_ptr<void const, Release>;

CFStringRef String(std::string const& text) {
    return CFStringCreateWithCString(kCFAllocatorDefault, text.c_str(), kCFStringEncodingUTF8);
}

// Reads files through the service, as property lists lie in files.
class PropertyList : public testing::Test {
protected:
    ~PropertyList() override { EXPECT_EQ(fDescriptors, support::CountDescriptors()); }

    // The bytes of a file; null for one that cannot be read.
    static Held Data(std::string const& path) {
        Held const string(String(path));
        Held const url(CFURLCreateWithFileSystemPath(
            kCFAllocatorDefault, static_cast<CFStringRef>(string.get()), kCFURLPOSIXPathStyle, 1));
        auto const* const place = static_cast<CFURLRef>(url.get());
        CFDataRef data = nullptr;
        SInt32 error = -1;
        Boolean const isRead = CFURLCreateDataAndPropertiesFromResource(
            kCFAllocatorDefault, place, &data, nullptr, nullptr, &error);
        EXPECT_EQ(isRead != 0, error == 0) << path;
        EXPECT_EQ(isRead != 0, data != nullptr) << path;
        return Held(data);
    }

    Held Read(std::string const& bytes) const {
        Held const data(Data(fFolder.Make("list", bytes)));
        return Held(CFPropertyListCreateFromXMLData(
            kCFAllocatorDefault,
            static_cast<CFDataRef>(data.get()),
            kCFPropertyListImmutable,
            nullptr));
    }

    support::TemporaryFolder fFolder;
    long fDescriptors = support::CountDescriptors();
};

std::string const kHead =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//Test//DTD PLIST "
    "1.0//EN\" \"http://example.com/PropertyList-1.0.dtd\">\n<plist version=\"1.0\">\n";

std::string List(std::string const& value) {
    return kHead + value + "\n</plist>\n";
}

std::string Repeat(std::string const& text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

} // namespace

TEST_F(PropertyList, ComparesByTypeAndContents) {
    char const* const kValues[] = {
        "<string>0</string>",
        "<integer>0</integer>",
        "<array><string>0</string></array>",
        "<dict><key>a</key><true/><key>b</key><false/></dict>",
        "<dict><key>a</key><true/><key>b</key><true/></dict>",
        "<dict><key>a</key><true/></dict>",
    };
    for (char const* const one : kValues) {
        Held const value = Read(List(one));
        for (char const* const other : kValues) {
            EXPECT_EQ(one == other ? 1 : 0, CFEqual(value.get(), Read(List(other)).get()))
                << one << " and " << other;
        }
        EXPECT_EQ(0, CFEqual(value.get(), nullptr));
    }
}

TEST_F(PropertyList, HoldsTheSameHoweverItIsWritten) {
    std::pair<std::string, std::string> const kCases[] = {
        {List("<dict/>"), List("<dict></dict>")},
        // The last of equal keys counts.
        {List("<dict><key>b</key><string>x</string><key>a</key><array><string/><true/></array>"
              "<key>b</key><dict/></dict>"),
         List("<dict><key>b</key><dict/><key>a</key><array><string></string><true/></array></"
              "dict>")},
        {List("<string> x &amp; &#228; </string>"), List("<string> x &#38; \xC3\xA4 </string>")},
        {List("<string><![CDATA[<raw>]]> end</string>"), List("<string>&lt;raw&gt; end</string>")},
        {"<?xml version='1.0' encoding='ISO-8859-1'?><plist><string>\xE4</string></plist>",
         List("<string>\xC3\xA4</string>")},
        {List("<!-- one --><dict><key>k</key><!-- another --><string>v</string></dict>"),
         "<plist><dict><key>k</key><string>v</string></dict></plist>"},
        {List("<array><data>AA==</data><date>x</date><real>1</real></array>"),
         List("<array>\n<data>AA==</data>\n<date>x</date>\n<real>1</real>\n</array>")},
    };
    for (auto const& [one, other] : kCases) {
        Held const value = Read(one);
        ASSERT_NE(nullptr, value) << one;
        EXPECT_EQ(1, CFEqual(value.get(), Read(other).get())) << one;
    }
}

TEST_F(PropertyList, IsNoneForWhatIsNoPropertyList) {
    std::string const entity = "<!DOCTYPE plist [<!ENTITY a \"b\">]><plist><string>&a;</string>";
    for (std::string const& bytes :
         {""s,
          "<dict/>"s,
          List(""),
          List("<dict>text</dict>"),
          List("<dict><string>v</string></dict>"),
          List("<dict><key>k</key></dict>"),
          List("<dict><key>k</key><key>l</key><string>v</string></dict>"),
          List("<array><unknown/></array>"),
          List("<string><b>x</b></string>"),
          List("<plist><dict/></plist>"),
          kHead + "<dict/>",
          "<plist><string>\xFF</string></plist>"s,
          entity + "</plist>",
          "<!DOCTYPE plist SYSTEM \"x\"><plist><string>a&x;b</string></plist>"s,
          "<!DOCTYPE plist [ %u; <!ENTITY a \"b\"> ]><plist><string>&a;</string></plist>"s,
          List(Repeat("<array>", 65) + Repeat("</array>", 65)),
          List(Repeat("<array>", 1000000))}) {
        EXPECT_EQ(nullptr, Read(bytes)) << bytes.substr(0, 200);
    }
    std::string const deepest = List(Repeat("<array>", 64) + Repeat("</array>", 64));
    EXPECT_NE(nullptr, Read(deepest));
}

TEST_F(PropertyList, FilesThatCannotBeReadHaveNoData) {
    std::string const large = fFolder.Make("large", "");
    std::filesystem::resize_file(large, (std::uintmax_t{64} << 20) + 1);
    for (std::string const& path : {fFolder / "missing", fFolder / "", "/dev/zero"s, large}) {
        EXPECT_EQ(nullptr, Data(path)) << path;
    }
    EXPECT_EQ(
        nullptr,
        CFURLCreateWithFileSystemPath(kCFAllocatorDefault, nullptr, kCFURLPOSIXPathStyle, 1));
}

TEST(MacRomanText, KeepsItsCharactersAndRefusesOthers) {
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte) {
        bytes.push_back(static_cast<char>(static_cast<unsigned char>(byte)));
    }
    Held const string(
        CFStringCreateWithCString(kCFAllocatorDefault, bytes.c_str(), kCFStringEncodingMacRoman));
    auto const* const text = static_cast<CFStringRef>(string.get());
    ASSERT_EQ(255, CFStringGetLength(text));
    UniChar units[255];
    CFStringGetCharacters(text, CFRangeMake(0, 255), units);
    EXPECT_EQ(
        u"ÄÅÇÉÑÖÜáàâäãåçéèêëíìîïñóòôöõúùûü"
        u"†°¢£§•¶ß®©™´¨≠ÆØ∞±≤≥¥µ∂∑∏π∫ªºΩæø"
        u"¿¡¬√ƒ≈∆«»…\u00A0ÀÃÕŒœ–—“”‘’÷◊ÿŸ⁄€‹›ﬁﬂ"
        u"‡·‚„‰ÂÊÁËÈÍÎÏÌÓÔ\uF8FFÒÚÛÙıˆ˜¯˘˙˚¸˝˛ˇ",
        std::u16string(units + 0x7F, units + 255));
    char back[256];
    EXPECT_EQ(0, CFStringGetCString(text, back, 255, kCFStringEncodingMacRoman));
    ASSERT_EQ(1, CFStringGetCString(text, back, 256, kCFStringEncodingMacRoman));
    EXPECT_EQ(bytes, back);
    Held const other(String("\xE6\x97\xA5"));
    EXPECT_EQ(
        0,
        CFStringGetCString(
            static_cast<CFStringRef>(other.get()), back, 256, kCFStringEncodingMacRoman));
}
