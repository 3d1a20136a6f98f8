// What this runtime alone promises, beyond the contract that the conformance kit checks.
#include "RuntimeFixture.h"
#include "conformance/Group.h"

#include <algorithm>

namespace runtimetest {
namespace {

class InProcessTest : public RuntimeTest {};

void ExpectNothingLeft(conformance::Check const& check) {
    bibrt::LiveCounts const before = bibrt::CountLive();
    RunCheck(check, Ours());
    EXPECT_EQ(bibrt::CountLive(), before) << check.fId;
}

TEST_F(InProcessTest, TheChecksOfTheKitLeaveNothingAlive) {
    BIBConformanceOptions const options = {nullptr, nullptr, 1, 0, nullptr, nullptr};
    for (conformance::Group const* const group : conformance::AllGroups()) {
        if (IsChosen(*group, options)) {
            std::ranges::for_each(group->fChecks, &ExpectNothingLeft);
        }
    }
}

TEST_F(InProcessTest, ErrorsGoToTheChannelThatWasSet) {
    std::string shown;
    auto const show = [](char const* message, void* client) {
        *static_cast<std::string*>(client) += message;
    };
    BIBRuntimeSetErrorChannel(show, &shown);
    auto const report = Ours().Bootstrap<BIBReportErrorProc>("BIBReportError");
    EXPECT_EQ(report("first;"), 1);
    EXPECT_EQ(report(nullptr), 1);
    BIBRuntimeSetErrorChannel(nullptr, nullptr);
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(report("second"), 1);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "second\n");
    EXPECT_EQ(shown, "first;");
}

TEST_F(InProcessTest, WhatTheRuntimeMadeOutlivesEveryRelease) {
    Held const number(Ours().NewNumber(1));
    BIBStringAtom* const signature = Containers().GetSignature(number.Container());
    BIBError* const error = Errors().GetCoreError(kBRVMemoryError);
    for (int i = 0; i < 3; ++i) {
        Atoms().DeleteStringAtom(signature);
        Errors().Release(error);
    }
    EXPECT_STREQ(Atoms().GetCString(signature), "POSNumberValue");
    EXPECT_EQ(TakeMessage(Errors().GetCoreError(kBRVMemoryError)), "out of memory");
}

TEST_F(InProcessTest, TheLastReleasedAtomsAreKept) {
    constexpr int kKept = 1024;
    for (int i = 0; i <= kKept; ++i) {
        Atom const released("released" + std::to_string(i));
    }
    bibrt::FailAllocation(1, /*andAllLater=*/true);
    EXPECT_EQ(Atoms().NewStringAtom("released0"), nullptr);
    BIBStringAtom* const kept = Atoms().NewStringAtom("released1");
    EXPECT_STREQ(Atoms().GetCString(kept), "released1");
    Atoms().DeleteStringAtom(kept);
}

TEST_F(InProcessTest, WrongArgumentsAreRefused) {
    MemoryStream const stream;
    Held const number(Ours().NewNumber(1));
    auto const methods = Ours().Methods<_t_BIBSimpleStreamInterface>(stream.Self());
    unsigned long size = 0;
    EXPECT_EQ(TakeMessage(Ours().Streams().NewPositionableMemoryStream(nullptr)), "bad argument");
    EXPECT_EQ(TakeMessage(methods.Write(nullptr, nullptr, 0)), "bad argument");
    EXPECT_EQ(
        TakeMessage(methods.Read(As<BIBSimpleStream>(number.Value()), &size, nullptr, 0)),
        "bad argument");
    EXPECT_EQ(
        TakeMessage(stream.TrySeek(0, static_cast<BIBPositionableStream_SeekOrigin>(3))),
        "seek from an unknown origin");
    EXPECT_EQ(Rows<_t_POSBinDataInterface>().NewPOSBinData("", nullptr, 1), nullptr);
    EXPECT_EQ(Cursors().NewPOSDictIterator(nullptr), nullptr);
    EXPECT_EQ(Containers().GetSignature(nullptr), nullptr);
    EXPECT_EQ(BIBRuntimeLookup(nullptr, "AddRef", "BIBErrorAddRefProcV2"), nullptr);
    auto const add = Ours().Bootstrap<BIBRegisterProcAddressProc>("BIBRegisterProcAddress");
    EXPECT_EQ(add(nullptr, "B", "Proc", &size), 0);
    EXPECT_EQ(add("Hosts", "B", "Proc", nullptr), 0);
}

void Increment(void* counter) {
    ++*static_cast<int*>(counter);
}
void IncrementAndThrow(void* counter) {
    Increment(counter);
    throw 1;
}

TEST_F(InProcessTest, AThrowingDeleteProcedureStopsNothing) {
    int deleted = 0;
    Atom const name("HostThing");
    {
        Held const dict(Dicts().NewPOSDict());
        for (auto const& [key, deleteProc] :
             {std::pair("first", &IncrementAndThrow), std::pair("second", &Increment)}) {
            POSObject* const value = Ours().NewNumber(1);
            TakeMessage(
                Containers().RegisterInstance(As<BIBContainer>(value), &deleted, name, deleteProc));
            Put(dict, key, value);
        }
    }
    EXPECT_EQ(deleted, 2);
}

} // namespace
} // namespace runtimetest
