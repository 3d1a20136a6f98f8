#include "source/FileMgmt.h"

#include "tests/support/BoundClient.h"

#include <algorithm>

namespace PDFSettingsImpl {

using BIB_T_NMT::CPOSArray;
using BIB_T_NMT::CPOSDict;

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
};

TEST_F(ListBuilder, RecordsALockedFileAsReadOnly) {
    CPOSDict info;
    EXPECT_TRUE(Make("/a/b.joboptions", kFSNodeLockedMask, 0777, &info));
    EXPECT_EQ(
        "<<SettingsName ^\"b\" FullFilePath ^\"/a/b.joboptions\" ReadOnly 1 "
        "ModDate Apple_UTCDateTime{AABBBBCC}>>",
        Describe(info));
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
    std::pair<Outcome, unsigned long> const kCases[] = {
        {Outcome::kThrown, 0}, {Outcome::kLost, 0}, {Outcome::kIn, 1}, {Outcome::kIn, 1}};
    for (auto const& [next, count] : kCases) {
        outcome = next;
        EXPECT_EQ(
            next == Outcome::kThrown ? "something else" : "nothing",
            Append(builder, "/a/b.joboptions"));
        EXPECT_EQ(count, builder.GetFileList().Count());
    }
}

TEST_F(ListBuilder, GoesOnWhateverItsStepsThrow) {
    CPOSDict const cloaks;
    cloaks.Put("b", CPOSDict());
    FileListBuilder builder(kUserSettingsDirectory, CPOSArray(), cloaks);
    CPOSDict record;
    Make("/a/b.joboptions", 0, 0600, &record);
    fLookup.Replace(
        "POSDictInterface.Put", +[](POSDict*, BIBStringAtom*, POSObject*) -> long { throw 1; });
    MoveCounter();
    CPOSDict const bindsToo; // the row anew
    EXPECT_EQ("nothing", support::WhatItThrows([&] { builder.AppendFileToList(record); }));
    fLookup.Replace(
        "POSArrayInterface.Append", +[](POSArray*, POSObject*) -> long { throw 1; });
    MoveCounter();
    CPOSArray const binds; // the row anew
    FSRef const file{"/a/c.joboptions"};
    HFSUniStr255 const name{12, {'c', '.', 'j', 'o', 'b', 'o', 'p', 't', 'i', 'o', 'n', 's'}};
    FSCatalogInfo const info{0, kDate, {}};
    FSRef const tooLong{std::string(5000, '/')};
    for (FSRef const* const item : {&file, &tooLong}) {
        EXPECT_EQ(0, CallbackIterProc(0, 1, &info, item, nullptr, &name, &builder));
    }
    fLookup.Replace(
        "BIBSharedBuffInterface.NewBuffer",
        +[](unsigned long, void*, void (*)(void*), void*, void*) -> BIBSharedBuffer* { throw 1; });
    auto const folder = support::PathOf("/a");
    MoveCounter();
    FileMgmt_Mac(nullptr).GetFilesInDirectory(folder, 1, builder);
    EXPECT_EQ(1U, builder.GetFileList().Count());
}

} // namespace PDFSettingsImpl
