#include "source/RegistryHelper.h"

#include "platform/FileManager.h"
#include "source/SettingsDataStore.h"
#include "tests/support/BoundClient.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/PropertyList.h"
#include "tests/support/TemporaryFolder.h"

namespace PDFSettingsImpl {

using BIB_T_NMT::CPOSDict;
using BIB_T_NMT::CPOSObject;
using support::Dict;
using support::DictEntry;
using support::Entry;
using support::NamesEntry;
using support::PropertyList;
using support::StringEntry;

class Preferences : public support::BoundClientTest {
protected:
    static constexpr char kFile[] = "/test.plist";

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
        return helper.GetDirectory(folder) ? support::TextOf(folder) : "-";
    }

    support::TemporaryFolder fFolder;
    support::EnvironmentVariable fConfig{"XDG_CONFIG_HOME", fFolder.Path().c_str()};
};

TEST_F(Preferences, ChangeTheCloakTable) {
    std::string const longName(512, 'n');
    std::string const longestName(511, 'n');
    std::string const unchanged = "<<A <<W 0 V 0>> B <<W 0>>>>";
    // Elements of ShowHide and the tables that they make.
    std::pair<std::string, std::string> const kCases[] = {
        {"<true/>", unchanged},
        {Dict(StringEntry("W", "0")), unchanged},
        {Dict(DictEntry("W", StringEntry("/", "0") + StringEntry("A", "0"))), "<<A <<V 0>>>>"},
        {Dict(DictEntry("W", StringEntry("/", "1") + StringEntry("A", "yes"))),
         "<<A <<W 1 V 0>> B <<W 0>> / <<W 1>>>>"},
        {Dict(DictEntry("W", Entry("/", "<integer>0</integer>") + StringEntry("B", ""))),
         "<<A <<W 0 V 0>> B <<W 1>> / <<W 1>>>>"},
        {Dict(DictEntry("N", StringEntry("C", "0") + StringEntry("A", "0"))),
         "<<A <<W 0 V 0 N 0>> B <<W 0>> C <<N 0>>>>"},
        {Dict(DictEntry("\xC3\xA9", StringEntry("\xE2\x82\xAC\xC3\xA9", "0"))),
         "<<A <<W 0 V 0>> B <<W 0>> \xDB\x8E <<\x8E 0>>>>"},
        {Dict(DictEntry("\xE6\x97\xA5", StringEntry("A", "0"))), unchanged},
        {Dict(DictEntry(longName, StringEntry("A", "0"))), unchanged},
        {Dict(DictEntry("W", StringEntry("\xE6\x97\xA5", "0") + StringEntry(longName, "0"))),
         unchanged},
        {Dict(DictEntry(longestName, StringEntry(longestName, "1"))),
         "<<A <<W 0 V 0>> B <<W 0>> " + longestName + " <<" + longestName + " 1>>>>"},
    };
    for (auto const& [showHide, expected] : kCases) {
        CPOSDict const table = Table("< A < W 0 V 0 > B < W 0 > >");
        Read(PropertyList(Entry("ShowHide", showHide))).GenerateCloakSettings(table);
        EXPECT_EQ(expected, Describe(table)) << showHide;
    }
}

// Each file that goes makes the walk pass over the first one of those that are left.
TEST_F(Preferences, TakeAnApplicationOutButForFilesPassedOver) {
    std::pair<char const*, char const*> const kCases[] = {
        {"< A < W 0 > B < W 0 > C < W 0 > >", "<<B <<W 0>>>>"},
        {"< A < V 0 W 0 > B < W 0 > C < V 0 > >", "<<A <<V 0>> C <<V 0>>>>"},
        {"< A 1 B < W 0 > C word D < W 0 > >", "<<A 1 C /word>>"},
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
}

TEST_F(Preferences, NameFilesForAnApplication) {
    std::string const number = "<array><string>a</string><string>A</string><integer>1</integer>"
                               "<string>B</string><string>c</string><string>C</string></array>";
    std::string const mark = "\xEF\xBB\xBF";
    struct {
        std::string fNames; // the entry of an application
        char const* fAppName;
        std::string fPairs;
    } const kCases[] = {
        {NamesEntry("W", {"a", "A", "b"}), "W", "[[^\"a\" ^\"A\"]]"},
        {NamesEntry("W", {"a", mark + "\xE2\x82\xAC"}),
         "W",
         "[[^\"a\" ^\"" + mark + "\xE2\x82\xAC\"]]"},
        {NamesEntry("\xC3\xA9", {"a", "A"}), "\x8E", "[[^\"a\" ^\"A\"]]"},
        {NamesEntry("W", {"a", "A"}), nullptr, "[]"},
        {Entry("W", number), "W", "[[^\"a\" ^\"A\"]]"},
        {StringEntry("W", "a"), "W", "[]"},
    };
    for (auto const& [names, appName, expected] : kCases) {
        MacRegistryHelper const helper = Read(PropertyList(DictEntry("PDFSettings", names)));
        EXPECT_EQ(expected, Describe(helper.GenerateDisplayNames(appName))) << names;
    }
    for (std::string const& entries : {StringEntry("PDFSettings", "W"), std::string()}) {
        EXPECT_EQ("[]", Describe(Read(PropertyList(entries)).GenerateDisplayNames("W")));
    }
    std::string const prefixed =
        PropertyList(DictEntry("ArdeoPDFSettings", NamesEntry("W", {"a", "A"})));
    EXPECT_EQ("[[^\"a\" ^\"A\"]]", Describe(Read(prefixed, true).GenerateDisplayNames("W")));
    EXPECT_EQ("[]", Describe(Read(prefixed).GenerateDisplayNames("W")));
}

TEST_F(Preferences, AreReadAsFarAsTheyAreGood) {
    auto const path = [](char const* key, char const* value) {
        return PropertyList(StringEntry(key, value));
    };
    struct {
        std::string fBytes;
        bool fPrefixedKeys;
        bool fIsValid;
        char const* fFolder;
    } const kCases[] = {
        {path("PDFSettingsPath", "/a/\xE2\x82\xAC"), false, true, "/a/\xE2\x82\xAC"},
        {path("PDFSettingsPath", ""), false, true, ""},
        {path("PDFSettingsPath", "/a"), true, true, "-"},
        {path("ArdeoPDFSettingsPath", "/a"), false, true, "-"},
        {path("ArdeoPDFSettingsPath", "/a"), true, true, "/a"},
        {PropertyList(Entry("PDFSettingsPath", "<integer>1</integer>")), false, true, "-"},
        {"<plist><array/></plist>", false, false, "-"},
        {"\xFF\xFE", false, false, "-"},
    };
    for (auto const& [bytes, prefixedKeys, isValid, folder] : kCases) {
        MacRegistryHelper helper = Read(bytes, prefixedKeys);
        EXPECT_EQ(isValid, helper.IsValid()) << bytes;
        helper.SetDirectory(support::PathOf("/s"));
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
    std::filesystem::path deep = fFolder.Path();
    for (int i = 0; i < 10; ++i) {
        deep /= std::string(100, 'd');
    }
    support::WriteBytes(deep.string() + kFile, PropertyList(""));
    fConfig.Set(deep.c_str());
    EXPECT_FALSE(MacRegistryHelper(kUserDomain, kFile, false).IsValid()) << "a path too long";
    fConfig.Set((fFolder / "missing").c_str());
    EXPECT_FALSE(MacRegistryHelper(kUserDomain, kFile, false).IsValid());
}

TEST_F(Preferences, AreUsedAsFarAsTheyCameWhateverIsThrown) {
    MacRegistryHelper const helper = Read(PropertyList(
        DictEntry("ShowHide", DictEntry("W", StringEntry("f", "0"))) +
        DictEntry("PDFSettings", NamesEntry("W", {"a", "A"}))));
    CPOSDict const table;
    fLookup.Replace(
        "POSDictInterface.Put", +[](POSDict*, BIBStringAtom*, POSObject*) -> long { throw 1; });
    fLookup.Replace(
        "POSArrayInterface.Append", +[](POSArray*, POSObject*) -> long { throw 1; });
    MoveCounter();
    EXPECT_EQ("nothing", support::WhatItThrows([&] { helper.GenerateCloakSettings(table); }));
    EXPECT_EQ("[]", Describe(helper.GenerateDisplayNames("W")));
}

TEST_F(Preferences, AreNotNeededByADataStore) {
    SettingsDataStoreImpl const store({}, {}, nullptr);
    EXPECT_EQ(SettingsDataStoreImpl::CreateDefaultCloakSettings(), store.GenerateCloakSettings());
    EXPECT_EQ("[]", Describe(store.GenerateDisplayNames("W")));
}

} // namespace PDFSettingsImpl
