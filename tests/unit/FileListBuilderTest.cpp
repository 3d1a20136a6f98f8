#include "source/FileListBuilder.h"

#include <algorithm>

#include "api/UnicodeEncoding.h"
#include "source/FileMgmt_Mac.h"
#include "source/SettingsDataStoreImpl.h"
#include "source/SettingsFileInfo.h"
#include "tests/support/BoundClient.h"
#include "tests/support/Describe.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/unit/FileServiceDouble.h"

namespace PDFSettingsImpl {

using BIB_T_NMT::CPOSArray;
using BIB_T_NMT::CPOSDict;
using BIB_T_NMT::CPOSObject;
using UnicodeEncodingNS::CreateCPOSUnicodeString;
using UnicodeEncodingNS::CreateUnicode16;
using UnicodeEncodingNS::Unicode8;

class ListBuilder : public support::BoundClientTest {
protected:
    static constexpr UTCDateTime kDate{0x4141, 0x42424242, 0x4343};

    std::string Describe(CPOSObject const& value) const {
        return support::Describer(fTables)(value);
    }

    // The record of an item, or "(none)".
    std::string Record(std::string const& path, UInt16 nodeFlags, UInt16 mode) const {
        CPOSDict info;
        bool const isThere = Make(path, nodeFlags, mode, &info);
        return isThere ? Describe(info) : "(none)";
    }

    static bool Make(std::string const& path, UInt16 nodeFlags, UInt16 mode, CPOSDict* info) {
        std::string const name = path.substr(path.rfind('/') + 1);
        HFSUniStr255 units{static_cast<UInt16>(name.size()), {}};
        std::copy(name.begin(), name.end(), units.unicode);
        FSCatalogInfo catalogInfo{nodeFlags, kDate, {}};
        FSPermissionInfo permissions{};
        permissions.mode = mode;
        std::memcpy(catalogInfo.permissions, &permissions, sizeof permissions);
        return MakeSettingsFileInfo(path.c_str(), units, catalogInfo, info);
    }

    // Adds an item; what it throws.
    static std::string Append(FileListBuilder const& builder, std::string const& path) {
        CPOSDict info;
        return support::WhatItThrows([&] {
            if (Make(path, 0, 0600, &info)) {
                builder.AppendFileToList(info);
            }
        });
    }

    static CPOSDict NewDict(char const* text) {
        return CPOSDict(
            CPOSObject::CreateFromText(text, nullptr, /*quiet=*/false), /*quiet=*/false);
    }

    support::HostTables fTables;
};

TEST_F(ListBuilder, RecordsItemsByTheirPathNameAndState) {
    auto const record = [](char const* name, char const* path, char const* readOnly) {
        return "<<" + (*name == '\0' ? "" : "SettingsName ^\"" + std::string(name) + "\" ") +
               "FullFilePath ^\"" + path + "\" ReadOnly " + readOnly +
               " ModDate Apple_UTCDateTime{AABBBBCC}>>";
    };
    struct {
        char const* fPath;
        UInt16 fNodeFlags;
        UInt16 fMode;
        std::string fRecord;
    } const kCases[] = {
        {"/a/b.joboptions", 0, 0200, record("b", "/a/b.joboptions", "0")},
        {"/a/b.joboptions", kFSNodeIsDirectoryMask, 0755, record("b", "/a/b.joboptions", "0")},
        {"/a/b.joboptions", kFSNodeLockedMask, 0777, record("b", "/a/b.joboptions", "1")},
        {"/a/b.joboptions", 0, 0577, record("b", "/a/b.joboptions", "1")},
        {"/a/b.c.joboptions", 0, 0600, record("b.c", "/a/b.c.joboptions", "0")},
        {"/a/ab.joboptions2", 0, 0600, record("ab.joboptions2", "/a/ab.joboptions2", "0")},
        {"/a/.joboptions", 0, 0600, "(none)"},
        {"/a/Draft.JOBOPTIONS", 0, 0600, "(none)"},
        {"/a/b.joboption", 0, 0600, "(none)"},
        {"/a/b", 0, 0600, "(none)"},
        {"/a.joboptions/b", 0, 0600, record("", "/a.joboptions/b", "0")},
        {"/a.joboptions/b.c", 0, 0600, "(none)"},
        {"/a.joboptions/elevenunits", 0, 0600, "(none)"},
        {"/a.joboptions/twelve units",
         0,
         0600,
         record("twelve units", "/a.joboptions/twelve units", "0")},
    };
    for (auto const& [path, nodeFlags, mode, expected] : kCases) {
        EXPECT_EQ(expected, Record(path, nodeFlags, mode)) << path;
    }
}

TEST_F(ListBuilder, ListsEachNameOnceAsItIsShown) {
    CPOSArray names;
    for (auto const& [file, shown] : {std::pair{"a", "shown"}, {"b", "shown"}, {"a", "late"}}) {
        CPOSArray pair;
        pair.Append(CreateCPOSUnicodeString(CreateUnicode16(Unicode8(file))));
        pair.Append(CreateCPOSUnicodeString(CreateUnicode16(Unicode8(shown))));
        names.Append(pair);
    }
    CPOSDict const table = NewDict("< a < W 0 > shown < W 1 > c < W 1 > (x.) 5 >");
    FileListBuilder builder(kAdminSettingsDirectory, names, table);
    for (char const* const path : {"/m/a.joboptions", "/m/b.joboptions", "/m/c.joboptions"}) {
        EXPECT_EQ("nothing", Append(builder, path));
    }
    builder.SetForWhichDirectory(kUserSettingsDirectory);
    for (char const* const path :
         {"/u/shown.joboptions", "/u/c.joboptions", "/u/C.joboptions", "/u/x.joboptions2"}) {
        EXPECT_EQ("nothing", Append(builder, path));
    }
    std::string const date = " ModDate Apple_UTCDateTime{AABBBBCC}";
    EXPECT_EQ(
        "[<<SettingsName ^\"shown\" FullFilePath ^\"/m/a.joboptions\" ReadOnly 1" + date +
            " ShowHide <<W 0>>>> "
            "<<SettingsName ^\"c\" FullFilePath ^\"/m/c.joboptions\" ReadOnly 1" +
            date +
            " ShowHide <<W 1>>>> "
            "<<SettingsName ^\"C\" FullFilePath ^\"/u/C.joboptions\" ReadOnly 0" +
            date +
            ">> "
            "<<SettingsName ^\"x.joboptions2\" FullFilePath ^\"/u/x.joboptions2\" ReadOnly 0" +
            date + " ShowHide 5>>]",
        Describe(builder.GetFileList()));
    // The table's own entry is in the list.
    CPOSDict const entry(table.Get("a", /*quiet=*/false), /*quiet=*/false);
    entry.Remove("W");
    CPOSDict const first(builder.GetFileList()[0], /*quiet=*/false);
    EXPECT_FALSE(first.GetDict(kShowHide, /*quiet=*/false).HasKey("W"));
}

// Names cannot be compared where one is missing.
TEST_F(ListBuilder, BearsARecordWithoutANameAloneOnly) {
    char const* const failure = "CPOSDict::Get failed";
    FileListBuilder const named(kUserSettingsDirectory, CPOSArray(), CPOSDict());
    EXPECT_EQ("nothing", Append(named, "/a/b.joboptions"));
    EXPECT_EQ(failure, Append(named, "/a.joboptions/b"));
    EXPECT_EQ("nothing", Append(named, "/a/c.joboptions"));
    EXPECT_EQ(2U, named.GetFileList().Count());
    FileListBuilder const nameless(kUserSettingsDirectory, CPOSArray(), NewDict("< b < W 0 > >"));
    EXPECT_EQ("nothing", Append(nameless, "/a.joboptions/b"));
    EXPECT_EQ(failure, Append(nameless, "/a/b.joboptions"));
    EXPECT_EQ(failure, Append(nameless, "/a.joboptions/c"));
    EXPECT_EQ(1U, nameless.GetFileList().Count());
    EXPECT_FALSE(CPOSDict(nameless.GetFileList()[0], /*quiet=*/false).HasKey(kShowHide));
}

TEST_F(ListBuilder, KeepsARecordWhosePathHasNoCloakKey) {
    FileListBuilder const builder(kUserSettingsDirectory, CPOSArray(), NewDict("< a < W 0 > >"));
    CPOSDict info;
    EXPECT_TRUE(Make("a.joboptions", 0, 0600, &info));
    builder.AppendFileToList(info);
    EXPECT_FALSE(info.HasKey(kShowHide));
    EXPECT_EQ(1U, builder.GetFileList().Count());
}

TEST_F(ListBuilder, KeepsWhatWasListedBeforeAFailure) {
    support::TemporaryFolder const folder;
    for (char const* const name : {"a.joboptions", "b.joboptions", "c.joboptions"}) {
        folder.Make(name, "");
    }
    SettingsDataStoreImpl const store({}, {}, nullptr);
    auto const path = CreateUnicode16(Unicode8(folder.Path().c_str()));
    support::FileServiceDouble service;
    // The folder is found and opened, then each item is asked for.
    for (unsigned long n = 1; n <= 6; ++n) {
        FileListBuilder builder(kUserSettingsDirectory, CPOSArray(), CPOSDict());
        service.FailCall(n);
        FileMgmt_Mac(&store).GetFilesInDirectory(path, 1, builder);
        EXPECT_EQ(n <= 3 ? 0 : n - 3, builder.GetFileList().Count()) << n;
    }
}

} // namespace PDFSettingsImpl
