// Which settings a host finds, in a user's folders and in the administrator's of this build.

#include "tests/support/EnvironmentVariable.h"
#include "tests/support/PropertyList.h"
#include "tests/support/Settings.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <array>
#include <bit>

namespace support {

namespace {

std::filesystem::path const kAdminSupport = PDFSETTINGS_ADMIN_SUPPORT_FOLDER;
std::filesystem::path const kAdminPreferences = PDFSETTINGS_ADMIN_PREFERENCES_FOLDER;
// The bytes of a folder's name count, whatever characters they are.
constexpr char kConfig[] = "home of j\xC3\xB6rg \xFF/config";
std::filesystem::path const kSettings = "Ardeo/Ardeo PDF/Settings";

void ClearAdminFolders() {
    for (auto const& folder : {kAdminSupport, kAdminPreferences}) {
        std::filesystem::remove_all(folder);
        std::filesystem::create_directories(folder);
    }
}

bool IsOfTheBuild(std::filesystem::path const& folder) {
    return folder.string().starts_with(PDFSETTINGS_BUILD_FOLDER "/");
}

// The bytes of a number as values are described.
template <class Number>
std::string Bytes(Number number) {
    std::string text;
    for (char const byte : std::bit_cast<std::array<char, sizeof number>>(number)) {
        text += byte == '\0' ? "\\0" : std::string(1, byte);
    }
    return text;
}

} // namespace

class Listing : public SettingsTest {
protected:
    void SetUp() override {
        if (!IsOfTheBuild(kAdminSupport) || !IsOfTheBuild(kAdminPreferences)) {
            GTEST_SKIP() << "the administrator's folders are real ones";
        }
        ClearAdminFolders();
    }

    void TearDown() override {
        if (IsOfTheBuild(kAdminSupport)) {
            ClearAdminFolders();
        }
        EXPECT_EQ(fDescriptors, CountDescriptors());
    }

    std::filesystem::path UserFolder() const { return fFolder.Path() / "data" / kSettings; }
    static std::filesystem::path AdminFolder() { return kAdminSupport / kSettings; }

    // The units of a path as the component gives it.
    static std::u16string Marked(std::filesystem::path const& path) {
        return u"\uFEFF" + path.u16string() + std::u16string(1, u'\0');
    }

    void WriteAdminList(std::string const& bytes) const {
        WriteBytes(kAdminPreferences / "com.ardeo.PDFAdminSettings.plist", bytes);
    }
    void WriteUserList(std::string const& bytes) const {
        WriteBytes(fFolder.Path() / kConfig / "com.ardeo.PDFSettings.plist", bytes);
    }

    // The list in alphabetical order of "name path ReadOnly ShowHide", folders left out. The
    // administrator's come first in it.
    std::vector<std::string> List(char const* appName = "Webrix") const {
        auto const list = Own(fGetList(appName));
        std::vector<std::string> lines;
        for (unsigned long i = 0; i < fRuntime.Arrays().Count(list); ++i) {
            lines.push_back(LineOf(Describer(fRuntime)(fRuntime.Arrays().GetAt(list, i))));
        }
        EXPECT_TRUE(std::is_partitioned(lines.begin(), lines.end(), [](std::string const& line) {
            return line.find("^\"admin/") != std::string::npos;
        }));
        std::sort(lines.begin(), lines.end());
        return lines;
    }

    // A line of it.
    static std::string
    Line(std::string const& name, std::string const& path, std::string const& rest) {
        return "<<SettingsName ^\"" + name + "\" FullFilePath ^\"" + path + "\" ReadOnly " + rest;
    }

    // Without what is the same for all and the folders of this test.
    std::string LineOf(std::string record) const {
        for (auto const& [folder, name] :
             {std::pair(UserFolder() / "", "user/"), {AdminFolder() / "", "admin/"}}) {
            std::size_t const place = record.find(folder.string());
            if (place != std::string::npos) {
                record.replace(place, folder.string().size(), name);
            }
        }
        std::size_t const date = record.find(" ModDate");
        std::size_t const end = std::min(record.find(" ShowHide"), record.size());
        return record.erase(date, end - date);
    }

    TemporaryFolder fFolder{support::OwnPlace()};
    EnvironmentVariable fData{"XDG_DATA_HOME", (fFolder / "data").c_str()};
    EnvironmentVariable fConfig{"XDG_CONFIG_HOME", (fFolder / kConfig).c_str()};
    long fDescriptors = CountDescriptors();
};

TEST_F(Listing, IsEmptyWithoutFilesAndMakesTheUsersFolder) {
    EXPECT_TRUE(List().empty());
    EXPECT_TRUE(std::filesystem::is_directory(UserFolder()));
    EXPECT_FALSE(std::filesystem::exists(AdminFolder()));
    EXPECT_EQ(Marked(UserFolder()), TakePath(fGetFolder()));
}

TEST_F(Listing, HasEveryFileOnceByItsName) {
    for (char const* const name :
         {"both.joboptions",
          "Draft.JOBOPTIONS",
          "ab.joboptions2",
          "b.c.joboptions",
          "b.joboption",
          ".joboptions",
          "notes.txt",
          "\xE6\x97\xA5\xF0\x9F\x98\x80.joboptions",
          "\xEF\xBB\xBFStandard.joboptions",
          "bad\xFF.joboptions",
          "Standard.joboptions"}) {
        WriteBytes(UserFolder() / name, "");
    }
    WriteBytes(UserFolder() / "folder.joboptions/inside.joboptions", "");
    WriteBytes(UserFolder() / "readonly.joboptions", "");
    std::filesystem::permissions(
        UserFolder() / "readonly.joboptions", std::filesystem::perms::owner_read);
    WriteBytes(AdminFolder() / "both.joboptions", "");
    WriteBytes(AdminFolder() / "Press Quality.joboptions", "");
    // A table's name for a file is its own without as many units as the extension has.
    WriteAdminList(
        PropertyList(DictEntry("ShowHide", DictEntry("Webrix", StringEntry("ab.", "1")))));
    std::string const text = "\xE6\x97\xA5\xF0\x9F\x98\x80";
    std::vector<std::string> const expected{
        Line("Press Quality", "admin/Press Quality.joboptions", "1 ShowHide <<Webrix 0>>>>"),
        Line(
            "Standard",
            "user/Standard.joboptions",
            "0 ShowHide <<Webrix 0 Vectrapaint 0 Pagemint 0 Rasterlab 0>>>>"),
        Line("ab.joboptions2", "user/ab.joboptions2", "0 ShowHide <<Webrix 1>>>>"),
        Line("b.c", "user/b.c.joboptions", "0"),
        Line("both", "admin/both.joboptions", "1"),
        Line("folder", "user/folder.joboptions", "0"),
        Line("readonly", "user/readonly.joboptions", "1"),
        Line(text, "user/" + text + ".joboptions", "0"),
        // A mark at the head is a part of the name.
        Line("\xEF\xBB\xBFStandard", "user/\xEF\xBB\xBFStandard.joboptions", "0"),
    };
    EXPECT_EQ(expected, List());
}

// It may be the one of a folder. A record without a name is listed alone, as no other can be
// compared with it, and has no place in a table, not even under the empty name.
TEST_F(Listing, LooksForTheExtensionAtTheLastDotOfThePath) {
    std::string const folder = fFolder / "a.joboptions";
    WriteUserList(PropertyList(StringEntry("PDFSettingsPath", folder)));
    WriteAdminList(PropertyList(DictEntry("ShowHide", DictEntry("W", StringEntry("", "1")))));
    // Files and the record of the last one, or nothing.
    std::pair<std::vector<std::string>, char const*> const kCases[] = {
        {{"b"}, "<<"},
        {{"twelve units"}, "<<SettingsName ^\"twelve units\" "},
        {{"twelve units", "b"}, "<<"},
        {{"b.c"}, ""},
        {{"elevenunits"}, ""},
    };
    for (auto const& [files, record] : kCases) {
        for (std::string const& name : files) {
            WriteBytes(std::filesystem::path(folder) / name, "");
        }
        std::string const expected =
            record + ("FullFilePath ^\"" + folder + "/" + files.back()) + "\" ReadOnly 0";
        std::vector<std::string> const found = List();
        ASSERT_EQ(*record == '\0' ? 0U : 1U, found.size()) << files.back();
        EXPECT_TRUE(files.size() > 1 || found.empty() || found[0] == expected) << found[0];
        std::filesystem::remove_all(folder);
    }
}

TEST_F(Listing, FollowsTheAdministratorEachTimeAnew) {
    WriteBytes(UserFolder() / "Standard.joboptions", "");
    WriteAdminList(PropertyList(
        DictEntry(
            "ShowHide", DictEntry("Webrix", StringEntry("/", "1") + StringEntry("Standard", "1"))) +
        DictEntry(
            "PDFSettings",
            NamesEntry("Webrix", {"Standard", "Usual", "Standard", "Other"}) +
                NamesEntry("Pagemint", {"Standard", "Plain"}))));
    // What only an administrator may lay down is not looked at in the user's list.
    WriteUserList(PropertyList(
        DictEntry("ShowHide", DictEntry("Mine", StringEntry("Standard", "0"))) +
        DictEntry("PDFSettings", NamesEntry("Webrix", {"Standard", "Mine"}))));
    auto const line = [](char const* name, char const* readOnly, char const* webrix) {
        return Line(
            name,
            "user/Standard.joboptions",
            std::string(readOnly) + " ShowHide <<Webrix " + webrix +
                " Vectrapaint 0 Pagemint 0 Rasterlab 0>>>>");
    };
    using Lines = std::vector<std::string>;
    EXPECT_EQ(Lines{line("Usual", "1", "1")}, List("Webrix"));
    EXPECT_EQ(Lines{line("Plain", "1", "1")}, List("Pagemint"));
    EXPECT_EQ(Lines{line("Standard", "0", "1")}, List("Vectrapaint"));
    // Files are the same by the names that are shown.
    WriteBytes(AdminFolder() / "Usual.joboptions", "");
    EXPECT_EQ(Lines{Line("Usual", "admin/Usual.joboptions", "1")}, List("Webrix"));
    std::filesystem::remove(AdminFolder() / "Usual.joboptions");
    for (char const* const bad : {"", "<plist>", "<plist><array/></plist>"}) {
        WriteAdminList(bad);
        EXPECT_EQ(Lines{line("Standard", "0", "0")}, List());
    }
}

TEST_F(Listing, LooksWherePreferencesLead) {
    std::string const user = fFolder / "moved/user";
    std::string const admin = fFolder / "moved/admin";
    // A mark at the head of the path is none of it, and a slash at its end is.
    WriteUserList(PropertyList(StringEntry("PDFSettingsPath", "\xEF\xBB\xBF" + user + "/")));
    WriteBytes(AdminFolder() / "standard.joboptions", "");
    std::vector<std::string> expected{Line("standard", "admin/standard.joboptions", "1")};
    EXPECT_EQ(expected, List());
    WriteAdminList(PropertyList(StringEntry("PDFSettingsPath", admin)));
    EXPECT_TRUE(List().empty());
    EXPECT_TRUE(std::filesystem::is_directory(user));
    EXPECT_FALSE(std::filesystem::exists(admin));
    EXPECT_EQ(Marked(user + "/"), TakePath(fGetFolder()));
    WriteBytes(user + "/u.joboptions", "");
    WriteBytes(admin + "/a.joboptions", "");
    expected = {Line("a", admin + "/a.joboptions", "1"), Line("u", user + "/u.joboptions", "0")};
    EXPECT_EQ(expected, List());
    WriteUserList(PropertyList(StringEntry("PDFSettingsPath", "")));
    WriteAdminList(PropertyList(StringEntry("PDFSettingsPath", "")));
    EXPECT_TRUE(List().empty());
    EXPECT_EQ(Marked(""), TakePath(fGetFolder()));
}

TEST_F(Listing, TellsWhenAFileChanged) {
    // In two bytes, four and two, in the machine's order: the seconds since 1904 and a fraction of
    // 1/65536.
    struct Case {
        timespec fTime;
        std::uint16_t fHigh;
        std::uint32_t fLow;
        std::uint16_t fFraction;
    };
    Case const kCases[] = {
        {{0, 0}, 0, 0x7C25B080, 0},
        {{1, 15258}, 0, 0x7C25B081, 0},
        {{1, 15259}, 0, 0x7C25B081, 1},
        {{1000000000, 999999999}, 0, 0xB7C07A80, 0xFFFF},
        {{2212122496, 500000000}, 1, 0, 0x8000},
        {{-2082844800, 0}, 0, 0, 0},
    };
    std::filesystem::path const file = UserFolder() / "a.joboptions";
    WriteBytes(file, "");
    for (auto const& [time, high, low, fraction] : kCases) {
        if (SetTime(file, time)) {
            auto const list = Own(fGetList(""));
            std::string const record = Describer(fRuntime)(fRuntime.Arrays().GetAt(list, 0));
            std::string const expected =
                " ModDate Apple_UTCDateTime{" + Bytes(high) + Bytes(low) + Bytes(fraction) + "}>>";
            EXPECT_TRUE(record.ends_with(expected)) << time.tv_sec << ": " << record;
        }
    }
}

} // namespace support
