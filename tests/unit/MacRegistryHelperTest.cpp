#include "source/MacRegistryHelper.h"

#include <set>

#include "platform/FileManager.h"
#include "source/SettingsDataStoreImpl.h"
#include "tests/support/BoundClient.h"
#include "tests/support/Describe.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/PropertyList.h"
#include "tests/support/TemporaryFolder.h"

namespace PDFSettingsImpl {

using BIB_T_NMT::CPOSDict;
using BIB_T_NMT::CPOSObject;
using support::DictEntry;
using support::Entry;
using support::PropertyList;
using support::StringEntry;

class Preferences : public support::BoundClientTest {
protected:
    static constexpr char kFile[] = "/test.plist";

    std::string Describe(CPOSObject const& value) const {
        return support::Describer(fTables)(value);
    }

    // A helper on these bytes.
    MacRegistryHelper Read(std::string const& bytes, bool prefixedKeys = false) const {
        fFolder.Make("test.plist", bytes);
        return MacRegistryHelper(kUserDomain, kFile, prefixedKeys);
    }

    static CPOSDict Table(char const* text) {
        return CPOSDict(
            CPOSObject::CreateFromText(text, nullptr, /*quiet=*/false), /*quiet=*/false);
    }

    // The folder that a helper finds, or "-".
    static std::string Folder(MacRegistryHelper const& helper) {
        UnicodeEncodingNS::Unicode16 folder;
        if (!helper.GetDirectory(folder)) {
            return "-";
        }
        auto const bytes = UnicodeEncodingNS::CreateUnicode8(folder).GetString(
            UnicodeEncodingNS::kByteOrderNative, /*terminate=*/false, /*mark=*/false);
        return std::string(reinterpret_cast<char const*>(bytes.GetBuffer()), bytes.GetSize());
    }

    // A path of 1,023 bytes is the longest. A longer folder is not taken for the root.
    void ExpectLimitOfPath() {
        std::string folder = fFolder / "deep";
        while (folder.size() < 1023 - sizeof kFile - 200) {
            folder += "/" + std::string(100, 'd');
        }
        folder += "/" + std::string(1023 - (sizeof kFile - 1) - folder.size() - 1, 'd');
        for (std::string const& longer : {std::string(), std::string("d"), std::string(30, 'd')}) {
            support::WriteBytes(folder + longer + kFile, PropertyList(""));
            fConfig.Set((folder + longer).c_str());
            EXPECT_EQ(longer.empty(), MacRegistryHelper(kUserDomain, kFile, false).IsValid());
        }
        std::string const absolute = fFolder.Make("root.plist", PropertyList(""));
        EXPECT_FALSE(MacRegistryHelper(kUserDomain, absolute.c_str(), false).IsValid());
    }

    support::HostTables fTables;
    support::TemporaryFolder fFolder;
    support::EnvironmentVariable fConfig{"XDG_CONFIG_HOME", fFolder.Path().c_str()};
};

TEST_F(Preferences, ChangeTheCloakTable) {
    std::string const longName(512, 'n');
    std::string const longestName(511, 'n');
    struct {
        std::string fShowHide; // an element
        std::string fTable;
    } const kCases[] = {
        {"", "<<A <<W 0 V 0>> B <<W 0>>>>"},
        {"<string>0</string>", "<<A <<W 0 V 0>> B <<W 0>>>>"},
        {"<dict/>", "<<A <<W 0 V 0>> B <<W 0>>>>"},
        {"<dict>" + Entry("W", "<dict/>") + "</dict>", "<<A <<W 0 V 0>> B <<W 0>>>>"},
        {"<dict>" + StringEntry("W", "0") + "</dict>", "<<A <<W 0 V 0>> B <<W 0>>>>"},
        {"<dict>" + DictEntry("W", StringEntry("/", "0") + StringEntry("A", "0")) + "</dict>",
         "<<A <<V 0>>>>"},
        {"<dict>" + DictEntry("W", StringEntry("/", "1") + StringEntry("A", "yes")) + "</dict>",
         "<<A <<W 1 V 0>> B <<W 0>> / <<W 1>>>>"},
        {"<dict>" + DictEntry("W", Entry("/", "<integer>0</integer>") + StringEntry("B", "")) +
             "</dict>",
         "<<A <<W 0 V 0>> B <<W 1>> / <<W 1>>>>"},
        {"<dict>" + DictEntry("N", StringEntry("C", "0") + StringEntry("A", "0")) + "</dict>",
         "<<A <<W 0 V 0 N 0>> B <<W 0>> C <<N 0>>>>"},
        {"<dict>" + DictEntry("\xC3\xA9", StringEntry("\xE2\x82\xAC\xC3\xA9", "0")) + "</dict>",
         "<<A <<W 0 V 0>> B <<W 0>> \xDB\x8E <<\x8E 0>>>>"},
        {"<dict>" + DictEntry("\xE6\x97\xA5", StringEntry("A", "0")) +
             DictEntry(longName, StringEntry("A", "0")) +
             DictEntry(
                 "N",
                 StringEntry("\xE6\x97\xA5", "0") + StringEntry(longName, "0") +
                     StringEntry("B", "0")) +
             "</dict>",
         "<<A <<W 0 V 0>> B <<W 0 N 0>>>>"},
        {"<dict>" + DictEntry(longestName, StringEntry("A", "0") + StringEntry(longestName, "1")) +
             "</dict>",
         "<<A <<W 0 V 0 " + longestName + " 0>> B <<W 0>> " + longestName + " <<" + longestName +
             " 1>>>>"},
    };
    for (auto const& [showHide, expected] : kCases) {
        CPOSDict const table = Table("< A < W 0 V 0 > B < W 0 > >");
        Read(PropertyList(Entry("ShowHide", showHide.empty() ? "<true/>" : showHide)))
            .GenerateCloakSettings(table);
        EXPECT_EQ(expected, Describe(table)) << showHide;
    }
}

// What was merged when memory ran out stays, but for a table that could not take an entry.
TEST_F(Preferences, ChangeTheCloakTableAsFarAsMemoryGoes) {
    MacRegistryHelper const helper = Read(PropertyList(DictEntry(
        "ShowHide",
        DictEntry("N", StringEntry("A", "1") + StringEntry("B", "1") + StringEntry("C", "1")))));
    std::string const whole = "<<A <<W 0 N 1>> B <<W 0 N 1>> C <<N 1>>>>";
    std::set<std::string> const allowed{
        whole,
        "<<A <<W 0>> B <<W 0>>>>",
        "<<A <<W 0 N 1>> B <<W 0>>>>",
        "<<A <<W 0 N 1>> B <<W 0 N 1>>>>",
        "<<A <<W 0 N 1>> B <<W 0 N 1>> C <<>>>>",
        "<<>>"};
    for (unsigned long n = 1; n <= 10; ++n) {
        CPOSDict const table = Table("< A < W 0 > B < W 0 > >");
        bibrt::FailAllocation(n, /*andAllLater=*/true);
        EXPECT_EQ("nothing", support::WhatItThrows([&] { helper.GenerateCloakSettings(table); }));
        bibrt::ResetFailures();
        EXPECT_TRUE(allowed.contains(Describe(table))) << n << ": " << Describe(table);
    }
    CPOSDict const table = Table("< A < W 0 > B < W 0 > >");
    helper.GenerateCloakSettings(table);
    EXPECT_EQ(whole, Describe(table));
}

// Each file that goes makes the walk pass over the first one of those that are left.
TEST_F(Preferences, TakeAnApplicationOutButForFilesPassedOver) {
    struct {
        char const* fBefore;
        char const* fAfter;
    } const kCases[] = {
        {"< A < W 0 > B < W 0 > C < W 0 > >", "<<B <<W 0>>>>"},
        {"< A < W 0 > >", "<<>>"},
        {"< A < V 0 W 0 > B < W 0 > C < V 0 > >", "<<A <<V 0>> C <<V 0>>>>"},
        {"< A < W 0 V 0 > B < W 0 V 0 > >", "<<A <<V 0>> B <<V 0>>>>"},
        {"< A 1 B < W 0 > C word D < W 0 > >", "<<A 1 C /word>>"},
        {"< A < V 0 > B < V 0 > >", "<<A <<V 0>> B <<V 0>>>>"},
        {"< >", "<<>>"},
    };
    for (auto const& [before, after] : kCases) {
        CPOSDict const table = Table(before);
        RegistryHelper::RemoveAppFromSettings(table, "W");
        EXPECT_EQ(after, Describe(table)) << before;
    }
    CPOSDict const table = SettingsDataStoreImpl::CreateDefaultCloakSettings();
    EXPECT_EQ(
        "<<PDFA DRAFT <<Webrix 0 Vectrapaint 0 Pagemint 0 Rasterlab 0>> "
        "Standard <<Webrix 0 Vectrapaint 0 Pagemint 0 Rasterlab 0>> "
        "Rich Content PDF <<Vectrapaint 0>> Press Quality <<Webrix 0>> "
        "PDFX1a 2001 <<Webrix 0>> PDFX1a 2001 JPN <<Webrix 0>> "
        "PDFX1a 2003 <<Webrix 0>> PDFX1a 2003 JPN <<Webrix 0>> "
        "PDFX3 2002 <<Webrix 0>> PDFX3 2002 JPN <<Webrix 0>> "
        "PDFX3 2003 <<Webrix 0>> PDFX3 2003 JPN <<Webrix 0>> "
        "Oversized Pages <<Webrix 0 Vectrapaint 0 Pagemint 0 Rasterlab 0>> "
        "PDFA1b 2005 CMYK <<Webrix 0 Vectrapaint 0 Pagemint 0 Rasterlab 0>> "
        "PDFA1b 2005 RGB <<Webrix 0 Vectrapaint 0 Pagemint 0 Rasterlab 0>> "
        "PDFX4 2007 <<Webrix 0>> PDFX4 2007 JPN <<Webrix 0>>>>",
        Describe(table));
    RegistryHelper::RemoveAppFromSettings(table, "Webrix");
    EXPECT_EQ(
        "<<PDFA DRAFT <<Vectrapaint 0 Pagemint 0 Rasterlab 0>> "
        "Standard <<Vectrapaint 0 Pagemint 0 Rasterlab 0>> Rich Content PDF <<Vectrapaint 0>> "
        "Oversized Pages <<Vectrapaint 0 Pagemint 0 Rasterlab 0>> "
        "PDFA1b 2005 CMYK <<Vectrapaint 0 Pagemint 0 Rasterlab 0>> "
        "PDFA1b 2005 RGB <<Vectrapaint 0 Pagemint 0 Rasterlab 0>>>>",
        Describe(table));
}

TEST_F(Preferences, NameFilesForAnApplication) {
    auto const array = [](std::string const& elements) {
        return DictEntry("PDFSettings", Entry("W", "<array>" + elements + "</array>"));
    };
    auto const strings = [](std::initializer_list<char const*> texts) {
        std::string elements;
        for (char const* const text : texts) {
            elements += std::string("<string>") + text + "</string>";
        }
        return elements;
    };
    struct {
        std::string fEntries;
        char const* fAppName;
        char const* fPairs;
    } const kCases[] = {
        {array(strings({"a", "A", "b", "\xE2\x82\xAC"})),
         "W",
         "[[^\"a\" ^\"A\"] [^\"b\" ^\"\xE2\x82\xAC\"]]"},
        {array(strings({"a", "A", "b"})), "W", "[[^\"a\" ^\"A\"]]"},
        {array(strings({"a", "A"}) + "<integer>1</integer>" + strings({"B", "c", "C"})),
         "W",
         "[[^\"a\" ^\"A\"]]"},
        {array(strings({"a"}) + "<dict/>"), "W", "[]"},
        {array(strings({"a"})), "W", "[]"},
        {array(strings(
             {"a",
              "\xEF\xBB\xBF"
              "A"})),
         "W",
         "[[^\"a\" ^\"\xEF\xBB\xBF"
         "A\"]]"},
        {array(""), "W", "[]"},
        {array(strings({"a", "A"})), "V", "[]"},
        {array(strings({"a", "A"})), nullptr, "[]"},
        {DictEntry("PDFSettings", StringEntry("W", "a")), "W", "[]"},
        {StringEntry("PDFSettings", "W"), "W", "[]"},
        {DictEntry("PDFSettings", Entry("\xC3\xA9", "<array>" + strings({"a", "A"}) + "</array>")),
         "\x8E",
         "[[^\"a\" ^\"A\"]]"},
        {"", "W", "[]"},
    };
    for (auto const& [entries, appName, expected] : kCases) {
        MacRegistryHelper const helper = Read(PropertyList(entries));
        EXPECT_EQ(expected, Describe(helper.GenerateDisplayNames(appName))) << entries;
    }
    std::string const prefixed = PropertyList(Entry(
        "ArdeoPDFSettings",
        "<dict>" + Entry("W", "<array>" + strings({"a", "A"}) + "</array>") + "</dict>"));
    EXPECT_EQ("[[^\"a\" ^\"A\"]]", Describe(Read(prefixed, true).GenerateDisplayNames("W")));
    EXPECT_EQ("[]", Describe(Read(prefixed).GenerateDisplayNames("W")));
}

TEST_F(Preferences, AreReadAsFarAsTheyAreGood) {
    struct {
        std::string fBytes;
        bool fPrefixedKeys;
        bool fIsValid;
        char const* fFolder;
    } const kCases[] = {
        {PropertyList(StringEntry("PDFSettingsPath", "/a/\xE2\x82\xAC")),
         false,
         true,
         "/a/\xE2\x82\xAC"},
        {PropertyList(StringEntry("PDFSettingsPath", "")), false, true, ""},
        {PropertyList(Entry("PDFSettingsPath", "<integer>1</integer>")), false, true, "-"},
        {PropertyList(StringEntry("ArdeoPDFSettingsPath", "/a")), false, true, "-"},
        {PropertyList(StringEntry("ArdeoPDFSettingsPath", "/a")), true, true, "/a"},
        {PropertyList(StringEntry("PDFSettingsPath", "/a")), true, true, "-"},
        {PropertyList(""), false, true, "-"},
        {"<plist><array/></plist>", false, false, "-"},
        {"<plist><string>PDFSettingsPath</string></plist>", false, false, "-"},
        {"<plist><dict>", false, false, "-"},
        {"", false, false, "-"},
        {"\xFF\xFE", false, false, "-"},
    };
    for (auto const& [bytes, prefixedKeys, isValid, folder] : kCases) {
        MacRegistryHelper helper = Read(bytes, prefixedKeys);
        EXPECT_EQ(isValid, helper.IsValid()) << bytes;
        helper.SetDirectory(UnicodeEncodingNS::CreateUnicode16(UnicodeEncodingNS::Unicode8("/s")));
        EXPECT_EQ(folder, Folder(helper)) << bytes;
        CPOSDict const table = Table("< A < W 0 > >");
        helper.GenerateCloakSettings(table);
        EXPECT_EQ("<<A <<W 0>>>>", Describe(table));
        EXPECT_EQ("[]", Describe(helper.GenerateDisplayNames("W")));
    }
    EXPECT_FALSE(MacRegistryHelper(kUserDomain, "/missing.plist", false).IsValid());
    EXPECT_FALSE(
        MacRegistryHelper(kUserDomain, ("/" + std::string(1024, 'x')).c_str(), false).IsValid());
    EXPECT_FALSE(MacRegistryHelper(0, kFile, false).IsValid());
    ExpectLimitOfPath();
    fConfig.Set((fFolder / "missing").c_str());
    EXPECT_FALSE(MacRegistryHelper(kUserDomain, kFile, false).IsValid());
    // The path of the folder is taken for Mac Roman, whatever it is.
    support::WriteBytes(fFolder / "\xC3\xA9/test.plist", PropertyList(""));
    fConfig.Set((fFolder / "\xC3\xA9").c_str());
    EXPECT_FALSE(MacRegistryHelper(kUserDomain, kFile, false).IsValid());
}

TEST_F(Preferences, AreNotNeededByADataStore) {
    SettingsDataStoreImpl const store({}, {}, nullptr);
    EXPECT_EQ(SettingsDataStoreImpl::CreateDefaultCloakSettings(), store.GenerateCloakSettings());
    EXPECT_EQ("[]", Describe(store.GenerateDisplayNames("W")));
}

} // namespace PDFSettingsImpl
