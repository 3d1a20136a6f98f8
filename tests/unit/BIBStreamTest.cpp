#include "bib/BIBStream.h"

#include <string>

#include "bib/BIBStreamFactory.h"
#include "tests/support/BoundClient.h"

namespace BIB_T_NMT {

using support::WhatItThrows;

using BIBStreamHandle = support::BoundClientTest;

namespace {

std::string ReadAll(CBIBPositionableStream const& stream) {
    char bytes[64] = {};
    return std::string(bytes, stream.Read(static_cast<void*>(bytes), sizeof bytes));
}

} // namespace

TEST_F(BIBStreamHandle, WritesSeeksAndReadsBack) {
    CBIBPositionableStream const stream;
    stream.Seek(0, kBIBSeekFromEnd);
    EXPECT_EQ(0U, stream.Mark());
    stream.Write(static_cast<void const*>("some text"), 9);
    stream.Seek(0, kBIBSeekFromEnd);
    EXPECT_EQ(9U, stream.Mark());
    EXPECT_EQ("", ReadAll(stream));
    CBIBPositionableStream const copy(
        stream); // NOLINT(performance-unnecessary-copy-initialization)
    stream.Seek(5);
    EXPECT_EQ(5U, copy.Mark());
    EXPECT_EQ("text", ReadAll(copy));
}

TEST_F(BIBStreamHandle, KeepsItsBufferAliveAndLeavesUnowned) {
    TBIBSharedBuffer<unsigned char> buffer(2, nullptr);
    buffer[0] = 'o';
    buffer[1] = 'k';
    CBIBPositionableStream stream(buffer);
    buffer = TBIBSharedBuffer<unsigned char>();
    BIBPositionableStream* const raw = stream.UnownedReturn();
    EXPECT_FALSE(stream.IsValid());
    EXPECT_EQ("ok", ReadAll(CBIBPositionableStream(raw)));
}

TEST_F(BIBStreamHandle, ThrowsWhatTheRuntimeReports) {
    CBIBPositionableStream const stream;
    auto const operations = {
        +[](CBIBPositionableStream const& s) { ReadAll(s); },
        +[](CBIBPositionableStream const& s) { s.Write(static_cast<void const*>("x"), 1); },
        +[](CBIBPositionableStream const& s) { s.Mark(); },
        +[](CBIBPositionableStream const& s) { s.Seek(0); },
    };
    for (auto* const operation : operations) {
        bibrt::FailStreamOperation(1, /*andAllLater=*/false);
        EXPECT_NE("nothing", WhatItThrows([&] { operation(stream); }));
        bibrt::ResetFailures();
    }
}

TEST_F(BIBStreamHandle, CannotBeMadeWithoutAFactory) {
    fLookup.Hide("BIBStreamFactoryInterface.NewClientSimpleStream");
    MoveCounter();
    EXPECT_EQ("", WhatItThrows([] { CBIBPositionableStream const stream; }));
    gFinishedInit = false;
    EXPECT_EQ(nullptr, CBIBStreamFactory::NewMemoryStream());
    EXPECT_EQ("invalid container", WhatItThrows([] { CBIBPositionableStream const stream; }));
    gFinishedInit = true;
    fLookup.Show("BIBStreamFactoryInterface.NewClientSimpleStream");
}

TEST_F(BIBStreamHandle, NeedsTheMethodsOfItsLevel) {
    BIBSimpleStream* simple = nullptr;
    BIBClientStreamProcs const procs = {};
    ASSERT_TRUE(CBIBStreamFactory::Init());
    ASSERT_EQ(nullptr, gBIBStreamFactoryInterface.NewClientSimpleStream(&simple, &procs, nullptr));
    CBIBSimpleStream const stream(simple);
    EXPECT_NE("nothing", WhatItThrows([&] {
                  CBIBPositionableStream const s(reinterpret_cast<BIBPositionableStream*>(simple));
              }));
}

} // namespace BIB_T_NMT
