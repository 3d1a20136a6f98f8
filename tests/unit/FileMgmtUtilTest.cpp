#include "source/FileMgmtUtil.h"

#include "platform/FileManager.h"
#include "tests/support/BoundClient.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

#include <sys/stat.h>

namespace FileMgmtUtil {

using support::PathOf;
using support::TextOf;
using support::WhatItThrows;

class FolderUtilities : public support::BoundClientTest {
protected:
    bool Create(std::string const& path) const { return CreateFolderIfMissing(PathOf(path)); }
    bool IsFolder(std::string const& name) const {
        return std::filesystem::is_directory(fFolder / name);
    }

    support::TemporaryFolder fFolder{support::OwnPlace()};
};

TEST_F(FolderUtilities, MakeWhatIsMissingOfAnAbsolutePath) {
    std::string const folder = fFolder.Path().string();
    fFolder.Make("file", "");
    std::pair<std::string, bool> const kCases[] = {
        {folder, true},
        {folder + "/a", true},
        {folder + "/b/c d/\xE2\x82\xAC", true},
        {folder + "/e/", false},
        {folder + "/file/x", false},
        // Where a level cannot be made, the last one still is, in the last folder that was well.
        {folder + "/" + std::string(256, 'n') + "/last", true},
        // What is left then is one name, which cannot be.
        {folder + "/" + std::string(256, 'n') + "/middle/last", false},
        {"settings-relative/folder", true},
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
    support::EnvironmentVariable const data("XDG_DATA_HOME", nullptr);
    support::EnvironmentVariable const home("HOME", folder.c_str());
    // The longest path that fits with its terminator, and one more.
    std::string const name(250, 'x');
    std::string longest = folder + "/" + name + "/" + name + "/" + name + "/";
    longest.resize(1023, 'x');
    // Values of the variable and guesses, or nothing.
    std::pair<std::string, std::string> const kCases[] = {
        {folder + "/data", folder + "/data" + extra},
        {folder + "/data//", folder + "/data" + extra},
        {"relative", folder + "/.local/share" + extra},
        {longest, longest + extra},
        {longest + "x", ""},
        // What cannot be made is the folder anyway.
        {"/proc/nowhere", "/proc/nowhere" + extra},
        {fFolder.Make("file", ""), ""},
    };
    for (auto const& [path, guess] : kCases) {
        data.Set(path.c_str());
        EXPECT_EQ(guess, TextOf(GuessDirectoryLocation(kUserDirectory))) << path;
    }
    // The folder is made for its owner alone, but not what goes into it.
    for (std::string const made : {"data", ".local", ".local/share"}) {
        struct stat status {};
        EXPECT_EQ(0, stat((fFolder / made).c_str(), &status)) << made;
        EXPECT_EQ(0700U, status.st_mode & 07777U) << made;
    }
    EXPECT_FALSE(IsFolder("data/Ardeo"));
    EXPECT_TRUE(std::filesystem::exists(longest + "x"));
    // No preference moves an administrator's folder.
    std::string const adminFolder = PDFSETTINGS_ADMIN_SUPPORT_FOLDER;
    EXPECT_EQ(
        std::filesystem::is_directory(adminFolder) ? adminFolder + extra : "",
        TextOf(GuessDirectoryLocation(kAdminDirectory)));
    EXPECT_EQ("Internal error: Unknown directory type", WhatItThrows([] {
                  GuessDirectoryLocation(static_cast<DirectoryType>(2));
              }));
}

TEST_F(FolderUtilities, FindThePreferencesButMakeNoFolderForThem) {
    support::EnvironmentVariable const config("XDG_CONFIG_HOME", (fFolder / "none").c_str());
    FSRef ref;
    EXPECT_EQ(fnfErr, FSFindFolder(kUserDomain, kPreferencesFolderType, kCreateFolder, &ref));
    EXPECT_FALSE(IsFolder("none"));
    config.Set(fFolder.Path().c_str());
    EXPECT_EQ(noErr, FSFindFolder(kUserDomain, kPreferencesFolderType, kCreateFolder, &ref));
    EXPECT_EQ(fFolder.Path(), ref.path);
    EXPECT_EQ(fnfErr, FSFindFolder(kUserDomain, 0, kCreateFolder, &ref));
    EXPECT_EQ(fnfErr, FSFindFolder(0, kPreferencesFolderType, kCreateFolder, &ref));
}

TEST_F(FolderUtilities, LeaveAnExistingFileAloneIfAsked) {
    UnicodeEncodingNS::Buffer8 const nothing;
    fFolder.Make("a", "old");
    EXPECT_EQ(dupFNErr, WriteFileBytes(PathOf(fFolder / "a"), nothing, /*failIfExists=*/true));
    EXPECT_EQ("old", support::ReadBytes(fFolder / "a"));
    EXPECT_EQ(noErr, WriteFileBytes(PathOf(fFolder / "b"), nothing, /*failIfExists=*/true));
    EXPECT_EQ("a b ", fFolder.Names());
}

} // namespace FileMgmtUtil
