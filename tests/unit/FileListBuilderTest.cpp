#include "source/FileMgmt.h"

#include "tests/support/BoundClient.h"
#include "tests/support/Describe.h"

#include <algorithm>

namespace PDFSettingsImpl {

using BIB_T_NMT::CPOSArray;
using BIB_T_NMT::CPOSDict;
using BIB_T_NMT::CPOSUnicodeString;

class ListBuilder : public support::BoundClientTest {
protected:
    static constexpr UTCDateTime kDate{0x4141, 0x42424242, 0x4343};

    static bool Make(std::string const& path, UInt16 nodeFlags, UInt16 mode, CPOSDict* info) {
        std::string const name = path.substr(path.rfind('/') + 1);
        HFSUniStr255 units{static_cast<UInt16>(name.size()), {}};
        std::copy(name.begin(), name.end(), units.unicode);
        FSCatalogInfo catalogInfo{nodeFlags, kDate, {}};
        FSPermissionInfo permissions{};
        permissions.mode = mode;
        std::memcpy(catalogInfo.permissions, &permissions, sizeof permissions);
        return MakeSettingsFileInfo({}, path.c_str(), units, catalogInfo, info);
    }

    // Adds an item; what it throws.
    static std::string Append(FileListBuilder const& builder, std::string const& path) {
        CPOSDict info;
        Make(path, 0, 0600, &info);
        return support::WhatItThrows([&] { builder.AppendFileToList(info); });
    }

    conformance::Runtime const fRuntime{&BIBRuntimeLookup};
};

TEST_F(ListBuilder, RecordsItemsByTheirPathNameAndState) {
    struct {
        char const* fPath;
        UInt16 fNodeFlags;
        UInt16 fMode;
        char const* fName; // null for no record, empty for one without a name
        char const* fReadOnly = "0";
    } const kCases[] = {
        {"/a/b.joboptions", 0, 0200, "b"},
        {"/a/b.joboptions", kFSNodeIsDirectoryMask, 0755, "b"},
        {"/a/b.joboptions", kFSNodeLockedMask, 0777, "b", "1"},
        {"/a/b.joboptions", 0, 0577, "b", "1"},
        {"/a/b.c.joboptions", 0, 0600, "b.c"},
        {"/a/ab.joboptions2", 0, 0600, "ab.joboptions2"},
        {"/a/.joboptions", 0, 0600, nullptr},
        {"/a/Draft.JOBOPTIONS", 0, 0600, nullptr},
        {"/a/b.joboption", 0, 0600, nullptr},
        {"/a/b", 0, 0600, nullptr},
        {"/a.joboptions/b", 0, 0600, ""},
        {"/a.joboptions/b.c", 0, 0600, nullptr},
        {"/a.joboptions/elevenunits", 0, 0600, nullptr},
        {"/a.joboptions/twelve units", 0, 0600, "twelve units"},
    };
    for (auto const& [path, nodeFlags, mode, name, readOnly] : kCases) {
        CPOSDict info;
        EXPECT_EQ(name != nullptr, Make(path, nodeFlags, mode, &info)) << path;
        std::string const shown =
            name == nullptr || *name == '\0' ? "" : "SettingsName ^\"" + std::string(name) + "\" ";
        std::string const record = "<<" + shown + "FullFilePath ^\"" + path + "\" ReadOnly " +
                                   readOnly + " ModDate Apple_UTCDateTime{AABBBBCC}>>";
        EXPECT_EQ(name == nullptr ? "<<>>" : record, support::Describer(fRuntime)(info)) << path;
    }
}

// Names cannot be compared where one is missing.
TEST_F(ListBuilder, BearsARecordWithoutANameAloneOnly) {
    char const* const kFailure = "CPOSDict::Get failed";
    FileListBuilder const named(kUserSettingsDirectory, CPOSArray(), CPOSDict());
    EXPECT_EQ("nothing", Append(named, "/a/b.joboptions"));
    EXPECT_EQ(kFailure, Append(named, "/a.joboptions/b"));
    EXPECT_EQ("nothing", Append(named, "c.joboptions")); // no path that has a cloak key
    EXPECT_EQ(2U, named.GetFileList().Count());
    FileListBuilder const nameless(kUserSettingsDirectory, CPOSArray(), CPOSDict());
    EXPECT_EQ("nothing", Append(nameless, "/a.joboptions/b"));
    EXPECT_EQ(kFailure, Append(nameless, "/a/b.joboptions"));
    EXPECT_EQ(kFailure, Append(nameless, "/a.joboptions/c"));
    EXPECT_EQ(1U, nameless.GetFileList().Count());
}

// What the runtime answers to Append means nothing; a name is taken when its record is in the list.
TEST_F(ListBuilder, GoesByTheListAndNotByTheAnswer) {
    enum class Outcome { kThrown, kLost, kIn };
    static auto const kTables = conformance::LoadTable<_t_POSArrayInterface>(&BIBRuntimeLookup);
    static auto outcome = Outcome::kThrown;
    fLookup.Replace(
        "POSArrayInterface.Append", +[](POSArray* list, POSObject* value) -> long {
            if (outcome == Outcome::kThrown) {
                throw 1;
            }
            if (outcome == Outcome::kIn) {
                kTables.Append(list, value);
            }
            return outcome == Outcome::kIn ? 0 : 1;
        });
    MoveCounter();
    FileListBuilder const builder(kUserSettingsDirectory, CPOSArray(), CPOSDict());
    for (auto const& [next, count] :
         {std::pair(Outcome::kThrown, 0UL),
          {Outcome::kLost, 0UL},
          {Outcome::kIn, 1UL},
          {Outcome::kIn, 1UL}}) {
        outcome = next;
        EXPECT_EQ(
            next == Outcome::kThrown ? "something else" : "nothing",
            Append(builder, "/a/b.joboptions"));
        EXPECT_EQ(count, builder.GetFileList().Count());
    }
}

// A name without room for the extension has no cloak key, not even the empty one.
TEST_F(ListBuilder, GivesCloakSettingsToNamesThatAreLongEnough) {
    CPOSDict const cloaks;
    cloaks.Put("", CPOSDict());
    FileListBuilder const builder(kUserSettingsDirectory, CPOSArray(), cloaks);
    EXPECT_EQ("nothing", Append(builder, "/a.joboptions/b"));
    support::Describer const describe(fRuntime);
    EXPECT_EQ(std::string::npos, describe(builder.GetFileList()[0]).find("ShowHide"));
}

TEST_F(ListBuilder, GoesOnWhateverItsStepsThrow) {
    CPOSDict const cloaks;
    cloaks.Put("b", CPOSDict());
    FileListBuilder builder(kUserSettingsDirectory, CPOSArray(), cloaks);
    UnicodeEncodingNS::Unicode16 const folder =
        UnicodeEncodingNS::CreateUnicode16(UnicodeEncodingNS::Unicode8("/a"));
    CPOSDict record;
    Make("/a/b.joboptions", 0, 0600, &record);
    fLookup.Replace(
        "POSDictInterface.Put", +[](POSDict*, BIBStringAtom*, POSObject*) -> long { throw 1; });
    MoveCounter();
    CPOSDict const bindsToo; // the row anew
    EXPECT_EQ("nothing", support::WhatItThrows([&] { builder.AppendFileToList(record); }));
    EXPECT_EQ(1U, builder.GetFileList().Count());
    fLookup.Replace(
        "POSArrayInterface.Append", +[](POSArray*, POSObject*) -> long { throw 1; });
    MoveCounter();
    CPOSArray const binds; // the row anew
    FSRef const file{"/a/c.joboptions"};
    HFSUniStr255 const name{12, {'c', '.', 'j', 'o', 'b', 'o', 'p', 't', 'i', 'o', 'n', 's'}};
    FSCatalogInfo const info{0, kDate, {}};
    EXPECT_EQ(0, CallbackIterProc(0, 1, &info, &file, nullptr, &name, &builder));
    fLookup.Replace(
        "BIBSharedBuffInterface.NewBuffer",
        +[](unsigned long, void*, void (*)(void*), void*, void*) -> BIBSharedBuffer* { throw 1; });
    MoveCounter();
    FileMgmt_Mac(nullptr).GetFilesInDirectory(folder, 1, builder);
    EXPECT_EQ(1U, builder.GetFileList().Count());
}

// One that is no pair ends the search.
TEST_F(ListBuilder, TakesTheDisplayNameOfTheFirstPair) {
    auto const text = [](char16_t const* name) {
        return CPOSUnicodeString(reinterpret_cast<unsigned short const*>(name));
    };
    CPOSArray pairs;
    for (auto const& [name, shown] :
         {std::pair(u"\uFEFFb", u"\uFEFFfirst"), {u"\uFEFFb", u"\uFEFFsecond"}}) {
        CPOSArray const pair;
        pair.Append(text(name));
        pair.Append(text(shown));
        pairs.Append(pair);
    }
    pairs.Append(text(u"no pair"));
    FileListBuilder const builder(kUserSettingsDirectory, pairs, CPOSDict());
    EXPECT_EQ("nothing", Append(builder, "/a/b.joboptions"));
    EXPECT_EQ("nothing", Append(builder, "/a/c.joboptions"));
    support::Describer const describe(fRuntime);
    EXPECT_NE(std::string::npos, describe(builder.GetFileList()[0]).find("^\"first\""));
    EXPECT_NE(std::string::npos, describe(builder.GetFileList()[1]).find("^\"c\""));
}

} // namespace PDFSettingsImpl
