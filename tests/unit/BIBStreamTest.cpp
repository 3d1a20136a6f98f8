#include "bib/BIBStream.h"

#include "tests/support/BoundClient.h"

namespace BIB_T_NMT {

using support::WhatItThrows;

using BIBStreamHandle = support::BoundClientTest;

TEST_F(BIBStreamHandle, CannotBeMadeWithoutAFactory) {
    WithoutRows({"BIBStreamFactoryInterface.NewClientSimpleStream"}, [] {
        EXPECT_EQ(nullptr, CBIBStreamFactory::NewMemoryStream());
        EXPECT_EQ("invalid container", WhatItThrows([] { CBIBPositionableStream const stream; }));
    });
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
