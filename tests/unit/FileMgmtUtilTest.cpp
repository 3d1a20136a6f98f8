#include "source/FileMgmtUtil.h"

#include <cstring>
#include <fcntl.h>
#include <iterator>
#include <pwd.h>
#include <unistd.h>

#include "platform/FileManager.h"
#include "tests/support/BoundClient.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

namespace FileMgmtUtil {

using support::WhatItThrows;
using UnicodeEncodingNS::CreateUnicode8;
using UnicodeEncodingNS::Unicode8;

namespace {

Unicode16 PathOf(std::string const& text) {
    return CreateUnicode16(Unicode8(text.c_str()));
}

std::string TextOf(Unicode16 const& path) {
    auto const bytes = CreateUnicode8(path).GetString(
        UnicodeEncodingNS::kByteOrderNative, /*terminate=*/false, /*mark=*/false);
    return std::string(reinterpret_cast<char const*>(bytes.GetBuffer()), bytes.GetSize());
}

} // namespace

class FolderUtilities : public support::BoundClientTest {
protected:
    bool Create(std::string const& path) const { return CreateFolderIfMissing(PathOf(path)); }
    bool IsFolder(std::string const& name) const {
        return std::filesystem::is_directory(fFolder / name);
    }

    support::TemporaryFolder fFolder;
};

TEST_F(FolderUtilities, MakeWhatIsMissingOfAnAbsolutePath) {
    std::string const folder = fFolder.Path().string();
    fFolder.Make("file", "");
    struct {
        std::string fPath;
        bool fIsOk;
    } const kCases[] = {
        {folder, true},
        {folder + "/file", true},
        {folder + "/a", true},
        {folder + "/b/c d/\xE2\x82\xAC", true},
        {folder + "/e/", false},
        {folder + "/file/x", false},
        {folder + "/file/x/y/z", false},
        // Where a level cannot be made, the last one still is, in the last folder that was well.
        {folder + "/" + std::string(256, 'n') + "/last", true},
        {"settings-relative/folder", true},
        {"", false},
        {"/", true},
    };
    for (auto const& [path, isOk] : kCases) {
        EXPECT_EQ(isOk, Create(path)) << path;
    }
    EXPECT_TRUE(IsFolder("a"));
    EXPECT_TRUE(IsFolder("b/c d/\xE2\x82\xAC"));
    // Nor are they made; what a faulty run has left must not spoil the next.
    EXPECT_EQ(0U, std::filesystem::remove_all("settings-relative"));
    EXPECT_EQ("a b e file last ", fFolder.Names());
    EXPECT_FALSE(FileExists(PathOf(folder + "/x")));
    EXPECT_FALSE(FileExists(Unicode16()));
}

TEST_F(FolderUtilities, GuessWhereSettingsLie) {
    std::string const extra = "/Ardeo/Ardeo PDF/Settings";
    std::string const folder = fFolder.Path().string();
    support::EnvironmentVariable const data("XDG_DATA_HOME", (folder + "/data").c_str());
    support::EnvironmentVariable const home("HOME", folder.c_str());
    EXPECT_EQ(folder + "/data" + extra, TextOf(GuessDirectoryLocation(kUserDirectory)));
    struct stat status {};
    EXPECT_EQ(0, stat((folder + "/data").c_str(), &status));
    EXPECT_EQ(0700U, status.st_mode & 07777U);
    EXPECT_FALSE(std::filesystem::exists(folder + "/data/Ardeo"));
    data.Set((folder + "/data//").c_str());
    EXPECT_EQ(folder + "/data" + extra, TextOf(GuessDirectoryLocation(kUserDirectory)));
    EXPECT_TRUE(CreateFolderIfMissing(GuessDirectoryLocation(kUserDirectory)));
    data.Set("relative");
    EXPECT_EQ(folder + "/.local/share" + extra, TextOf(GuessDirectoryLocation(kUserDirectory)));
    EXPECT_TRUE(IsFolder(".local/share"));
    EXPECT_EQ(0, stat((folder + "/.local").c_str(), &status));
    EXPECT_EQ(0700U, status.st_mode & 07777U);
    // The longest path that fits with its terminator, and one more.
    std::string longest = folder + "/" + std::string(250, 'x');
    longest += "/" + std::string(250, 'x') + "/" + std::string(250, 'x') + "/";
    longest.resize(1023, 'x');
    data.Set(longest.c_str());
    EXPECT_EQ(longest + extra, TextOf(GuessDirectoryLocation(kUserDirectory)));
    data.Set((longest + "x").c_str());
    EXPECT_EQ("", TextOf(GuessDirectoryLocation(kUserDirectory)));
    EXPECT_TRUE(std::filesystem::exists(longest + "x"));
    for (std::string const& noFolder : {std::string("/proc/nowhere"), fFolder.Make("file", "")}) {
        data.Set(noFolder.c_str());
        EXPECT_EQ("", TextOf(GuessDirectoryLocation(kUserDirectory)));
    }
    // Nobody moves an administrator's folder.
    data.Set(nullptr);
    std::string const adminFolder = PDFSETTINGS_ADMIN_SUPPORT_FOLDER;
    EXPECT_EQ(
        std::filesystem::is_directory(adminFolder) ? adminFolder + extra : "",
        TextOf(GuessDirectoryLocation(kAdminDirectory)));
    EXPECT_EQ("Internal error: Unknown directory type", WhatItThrows([] {
                  GuessDirectoryLocation(static_cast<DirectoryType>(2));
              }));
}

TEST_F(FolderUtilities, FindThePreferencesOfUserAndMachine) {
    std::string const folder = fFolder.Path().string();
    std::filesystem::create_directory(fFolder / "config");
    support::EnvironmentVariable const config("XDG_CONFIG_HOME", (folder + "/config").c_str());
    FSRef ref;
    EXPECT_EQ(noErr, FSFindFolder(kUserDomain, kPreferencesFolderType, kCreateFolder, &ref));
    EXPECT_EQ(folder + "/config", ref.path);
    config.Set((folder + "/none").c_str());
    EXPECT_EQ(fnfErr, FSFindFolder(kUserDomain, kPreferencesFolderType, kCreateFolder, &ref));
    EXPECT_FALSE(std::filesystem::exists(fFolder / "none"));
    EXPECT_EQ(fnfErr, FSFindFolder(kUserDomain, 0, kCreateFolder, &ref));
    EXPECT_EQ(fnfErr, FSFindFolder(0, kPreferencesFolderType, kCreateFolder, &ref));
    passwd const* const user = getpwuid(getuid());
    if (user == nullptr || std::string(user->pw_dir) == "/") {
        GTEST_SKIP() << "this user has no home of its own";
    }
    std::string const ofDatabase = std::string(user->pw_dir) + "/.config";
    support::EnvironmentVariable const home("HOME", nullptr);
    config.Set(nullptr);
    std::error_code error;
    bool const isThere = std::filesystem::is_directory(ofDatabase, error);
    OSErr const found = FSFindFolder(kUserDomain, kPreferencesFolderType, kDontCreateFolder, &ref);
    EXPECT_EQ(isThere, found == noErr);
    EXPECT_EQ(isThere ? ofDatabase : folder + "/config", ref.path);
}

TEST_F(FolderUtilities, StampFilesByTheirContentModification) {
    std::string const file = fFolder.Make("a", "");
    struct {
        timespec fTime;
        UTCDateTime fStamp;
    } const kCases[] = {
        {{0, 0}, {0, 2082844800, 0}},
        {{1, 15259}, {0, 2082844801, 1}},
        {{1, 15258}, {0, 2082844801, 0}},
        {{1000000000, 999999999}, {0, 3082844800, 65535}},
        {{2212122496, 500000000}, {1, 0, 32768}},
        {{-2082844800, 0}, {0, 0, 0}},
    };
    for (auto const& [time, expected] : kCases) {
        timespec const times[] = {time, time};
        ASSERT_EQ(0, utimensat(AT_FDCWD, file.c_str(), times, 0));
        struct stat status {};
        ASSERT_EQ(0, stat(file.c_str(), &status));
        if (status.st_mtim.tv_sec != time.tv_sec || status.st_mtim.tv_nsec != time.tv_nsec) {
            continue; // the file system has no such time
        }
        TimeStamp const stamp = GetTimeStamp(PathOf(file));
        ASSERT_EQ(sizeof expected, stamp.GetSize());
        EXPECT_EQ(0, std::memcmp(&expected, stamp.GetBuffer(), sizeof expected)) << time.tv_sec;
        EXPECT_TRUE(AreTimeStampsEqual(stamp, GetTimeStamp(PathOf(file))));
    }
    EXPECT_FALSE(AreTimeStampsEqual(GetTimeStamp(PathOf(file)), TimeStamp(0)));
    EXPECT_TRUE(AreTimeStampsEqual(TimeStamp(0), TimeStamp(0)));
    EXPECT_EQ("FileMgmtUtil::GetTimeStamp FSPathMakeRef failed", WhatItThrows([&] {
                  GetTimeStamp(PathOf(file + "x"));
              }));
}

TEST(UnitSearch, FindsTheFirstPlaceBeforeTheTerminator) {
    unsigned short const text[] = {'a', '/', 'b', '/', 0, '/', 0};
    EXPECT_EQ(text + 1, my_wcschr(text, '/'));
    EXPECT_EQ(text + 3, my_wcschr(text + 2, '/'));
    EXPECT_EQ(nullptr, my_wcschr(text + 4, '/'));
    EXPECT_EQ(nullptr, my_wcschr(text, 'c'));
    EXPECT_EQ(nullptr, my_wcschr(text, 0));
}

} // namespace FileMgmtUtil
