#include "source/FileMgmtUtil.h"

#include "api/BIBRuntime.h"
#include "bib/POSCollections.h"
#include "conformance/Tables.h"
#include "source/PDFSettingsError.h"
#include "source/PDFSettingsObject.h"
#include "tests/support/BoundClient.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/unit/FileServiceDouble.h"

#include <chrono>
#include <cstring>
#include <unistd.h>

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

    support::TemporaryFolder fFolder;
    long fDescriptors = support::CountDescriptors();
    support::FileServiceDouble fService;
};

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

TEST_F(WholeFile, IsWrittenAndGoesAgainThoughNobodyMayWriteIt) {
    mode_t const before = umask(0777);
    EXPECT_EQ("nothing", WriteFailing(0, "a"));
    EXPECT_EQ("Error", WriteFailing(3, "b"));
    umask(before);
    EXPECT_EQ("a ", fFolder.Names());
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
    auto const errors = conformance::LoadTable<_t_BIBErrorInterface>(&BIBRuntimeLookup);
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
    fService.FailCall(0);
    auto const time = std::filesystem::last_write_time(fFolder / "one");
    std::filesystem::last_write_time(fFolder / "three", time + std::chrono::seconds(10));
    EXPECT_TRUE(settings.IsDirty());
    std::filesystem::last_write_time(fFolder / "three", time);
    EXPECT_FALSE(settings.IsDirty());
    // The stream's failure is no failure of the file.
    bibrt::FailStreamOperation(1, /*andAllLater=*/true);
    EXPECT_EQ("8 PDFSettingsObject::Write", write("four", 0));
    bibrt::ResetFailures();
    EXPECT_FALSE(std::filesystem::exists(fFolder / "four"));
    EXPECT_FALSE(settings.IsDirty());
}

} // namespace UnicodeEncodingNS
