#include "source/WholeFile.h"

#include <cstring>
#include <unistd.h>

#include "bib/POSDict.h"
#include "runtime/BIBRuntime.h"
#include "source/PDFSettingsError.h"
#include "source/PDFSettingsFile.h"
#include "tests/support/BoundClient.h"
#include "tests/support/RuntimeTables.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/unit/FileServiceDouble.h"

namespace UnicodeEncodingNS {

using PDFSettingsImpl::CPDFSettingsError;
using support::WhatItThrows;

class WholeFile : public support::BoundClientTest {
protected:
    ~WholeFile() override { EXPECT_EQ(fDescriptors, support::CountDescriptors()); }

    Unicode16 PathOf(std::string const& name) const {
        return CreateUnicode16(Unicode8((fFolder / name).c_str()));
    }

    static Buffer8 Bytes(char const* text) {
        return Unicode8(text).GetString(kByteOrderNative, /*terminate=*/false, /*mark=*/false);
    }

    // What writing throws when the n-th call of the service fails.
    std::string WriteFailing(unsigned long n, std::string const& name, bool failIfExists = false) {
        fService.FailCall(n);
        return WhatItThrows(
            [&] { WriteFile<CPDFSettingsError>(PathOf(name), Bytes("new"), failIfExists); });
    }

    // Puts a file there to be replaced, or none.
    void PutOldFile(bool isThere) const {
        std::filesystem::remove(fFolder / "a");
        if (isThere) {
            fFolder.Make("a", "old");
        }
    }

    // What writing throws when the n-th allocation fails.
    std::string WriteInShortage(unsigned long n, bool andAllLater) const {
        Unicode16 const path = PathOf("a");
        Buffer8 const bytes = Bytes("new");
        bibrt::FailAllocation(n, andAllLater);
        std::string const thrown = WhatItThrows(
            [&] { WriteFile<CPDFSettingsError>(path, bytes, /*failIfExists=*/false); });
        bibrt::ResetFailures();
        EXPECT_EQ(thrown == "nothing" ? "new" : "old", support::ReadBytes(fFolder / "a")) << n;
        return thrown;
    }

    support::TemporaryFolder fFolder;
    long fDescriptors = support::CountDescriptors();
    support::FileServiceDouble fService;
};

TEST_F(WholeFile, ReadsNothingButTheErrorWhereACallFails) {
    std::vector<std::string> const order = {
        "FSPathMakeRef",
        "FSGetDataForkName",
        "FSOpenFork",
        "FSGetForkSize",
        "FSSetForkPosition",
        "FSReadFork"};
    fFolder.Make("a", "bytes");
    Unicode16 const path = PathOf("a");
    for (unsigned long n = 1; n <= order.size(); ++n) {
        fService.FailCall(n);
        EXPECT_EQ("Error", WhatItThrows([&] { ReadFile<CPDFSettingsError>(path); })) << n;
        ASSERT_LE(n, fService.fCalls.size());
        EXPECT_EQ(order[n - 1], fService.fCalls[n - 1]);
    }
    fService.FailCall(0);
    Buffer8 const bytes = ReadFile<CPDFSettingsError>(path);
    EXPECT_EQ(
        "bytes", std::string(reinterpret_cast<char const*>(bytes.GetBuffer()), bytes.GetSize()));
    EXPECT_EQ(order.size(), fService.fCalls.size());
}

// What stands on disk after each failure.
TEST_F(WholeFile, LeavesTheOldFileOrNoneWhereACallFails) {
    struct {
        bool fIsReplaced; // there is a file already
        std::vector<std::string> fCalls;
        std::vector<std::string> fAfter; // the file's bytes when that call fails; "-" for no file
    } const kCases[] = {
        {false,
         {"FSPathMakeRef", "FSCreateFileUnicode", "FSGetDataForkName", "FSOpenFork", "FSWriteFork"},
         {"-", "-", "-", "-", "-"}},
        {true,
         {"FSPathMakeRef",
          "FSCreateFileUnicode",
          "FSPathMakeRef",
          "FSDeleteObject",
          "FSCreateFileUnicode",
          "FSGetDataForkName",
          "FSOpenFork",
          "FSWriteFork"},
         {"old", "old", "old", "old", "-", "-", "-", "-"}},
    };
    for (auto const& row : kCases) {
        for (unsigned long n = 1; n <= row.fCalls.size(); ++n) {
            PutOldFile(row.fIsReplaced);
            EXPECT_EQ("Error", WriteFailing(n, "a")) << row.fCalls[n - 1];
            bool const isThere = std::filesystem::exists(fFolder / "a");
            EXPECT_EQ(row.fAfter[n - 1], isThere ? support::ReadBytes(fFolder / "a") : "-")
                << row.fCalls[n - 1];
        }
        PutOldFile(row.fIsReplaced);
        EXPECT_EQ("nothing", WriteFailing(0, "a"));
        EXPECT_EQ(row.fCalls, fService.fCalls);
        EXPECT_EQ("new", support::ReadBytes(fFolder / "a"));
    }
    EXPECT_EQ("a ", fFolder.Names());
}

TEST_F(WholeFile, LeavesAnExistingFileAloneIfAsked) {
    fFolder.Make("a", "old");
    EXPECT_EQ("Error", WriteFailing(0, "a", /*failIfExists=*/true));
    EXPECT_EQ("old", support::ReadBytes(fFolder / "a"));
    EXPECT_EQ("nothing", WriteFailing(0, "b", /*failIfExists=*/true));
    WriteFile<CPDFSettingsError>(PathOf("b"), Buffer8(), /*failIfExists=*/false);
    EXPECT_EQ("", support::ReadBytes(fFolder / "b"));
    EXPECT_EQ(0U, ReadFile<CPDFSettingsError>(PathOf("b")).GetSize());
    EXPECT_EQ("a b ", fFolder.Names());
}

TEST_F(WholeFile, CleansUpWhereMemoryRunsOut) {
    constexpr unsigned long kMostAllocations = 1000;
    for (bool const andAllLater : {true, false}) {
        PutOldFile(/*isThere=*/true);
        unsigned long n = 1;
        while (n < kMostAllocations && WriteInShortage(n, andAllLater) != "nothing") {
            ++n;
        }
        EXPECT_LT(n, kMostAllocations);
    }
}

TEST_F(WholeFile, MakesSettingsOrAnErrorWhicheverAllocationFails) {
    fFolder.Make("a", "<</A 1 /B [ (x) ]>>setalembicorparams tail");
    Unicode16 const path = PathOf("a");
    auto const open = [&] { PDFSettingsImpl::PDFSettingsFile(path, "").IsDirty(); };
    open(); // takes what the runtime keeps
    unsigned long const start = bibrt::CountAllocations();
    open();
    unsigned long const allocations = bibrt::CountAllocations() - start;
    for (unsigned long n = 1; n <= allocations; ++n) {
        for (bool const andAllLater : {true, false}) {
            bibrt::FailAllocation(n, andAllLater);
            EXPECT_THROW(open(), BIB_T_NMT::CBIBError) << n;
            bibrt::ResetFailures();
        }
    }
}

TEST_F(WholeFile, GoesAgainThoughNobodyMayWriteIt) {
    mode_t const before = umask(0777);
    bool const isRoot = geteuid() == 0;
    EXPECT_EQ(isRoot ? "nothing" : "Error", WriteFailing(0, "a"));
    EXPECT_EQ("Error", WriteFailing(3, "b"));
    umask(before);
    EXPECT_EQ(isRoot ? "a " : "", fFolder.Names());
}

// A mark at the head of a name is no part of it.
TEST_F(WholeFile, HasNoNameThatBeginsWithAMark) {
    std::string const mark = "\xEF\xBB\xBF";
    EXPECT_EQ("nothing", WriteFailing(0, mark + "a"));
    EXPECT_EQ("Error", WriteFailing(0, mark));
    EXPECT_EQ("a ", fFolder.Names());
}

TEST_F(WholeFile, BindsSettingsAsFarAsTheWritingWent) {
    PDFSettingsImpl::PDFSettingsObject settings((BIB_T_NMT::CPOSDict()), "");
    auto const errors = support::LoadTable<_t_BIBErrorInterface>(&BIBRuntimeLookup);
    auto const write = [&](std::string const& name, unsigned long failing) {
        fService.FailCall(failing);
        BIB_T_NMT::CBIBError const error = settings.Write(PathOf(name));
        if (!error.IsValid()) {
            return std::string();
        }
        BIBError* const counted = error;
        std::string const id = std::to_string(errors.GetID(counted));
        errors.Release(counted);
        return id + " " + error.what();
    };
    EXPECT_EQ("", write("one", 0));
    unsigned long const calls = fService.fCalls.size();
    EXPECT_FALSE(settings.IsDirty());
    // The new file is there, but its stamp is not to be had: the old stamp meets the new path.
    EXPECT_EQ("7 FileMgmtUtil::GetTimeStamp FSPathMakeRef failed", write("two", calls - 1));
    EXPECT_EQ("3 MacOSErr", write("three", calls));
    EXPECT_TRUE(std::filesystem::exists(fFolder / "three"));
    std::filesystem::last_write_time(
        fFolder / "three", std::filesystem::last_write_time(fFolder / "one"));
    fService.FailCall(0);
    EXPECT_FALSE(settings.IsDirty());
    // The stream's failure is no failure of the file.
    bibrt::FailStreamOperation(1, /*andAllLater=*/true);
    EXPECT_EQ("8 PDFSettingsObject::Write", write("four", 0));
    bibrt::ResetFailures();
    EXPECT_FALSE(std::filesystem::exists(fFolder / "four"));
    EXPECT_FALSE(settings.IsDirty());
}

} // namespace UnicodeEncodingNS
