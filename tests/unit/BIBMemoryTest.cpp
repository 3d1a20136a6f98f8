#include "bib/BIBMemory.h"

#include "bib/BIBSharedBuffer.h"
#include "tests/support/BoundClient.h"

#include <cstring>
#include <limits>

namespace BIB_T_NMT {

using support::WhatItThrows;

using Units = TBIBMemoryBuffer<unsigned short, CBIBMemory>;
using SharedUnits = TBIBSharedBuffer<unsigned short>;

using BIBMemoryBuffer = support::BoundClientTest;
using BIBSharedBufferHandle = support::BoundClientTest;

constexpr unsigned long kTooMany = std::numeric_limits<unsigned long>::max() / 2 + 1;

TEST_F(BIBMemoryBuffer, CopiesAssignsAndHandsItsBlockOver) {
    unsigned short const source[] = {1, 2, 3};
    Units units(source, 3);
    EXPECT_EQ(6U, units.GetSize());
    Units copy(0);
    copy = units;
    EXPECT_NE(units.GetBuffer(), copy.GetBuffer());
    EXPECT_EQ(3, copy[2]);
    unsigned short* const block = units.TakeBuffer();
    EXPECT_EQ(0U, units.GetSize());
    EXPECT_EQ(nullptr, units.GetBuffer());
    CBIBMemory::Free(block);
}

TEST_F(BIBMemoryBuffer, RunsOutOfMemoryWhereASizeHasNoNumber) {
    EXPECT_EQ("out of memory", WhatItThrows([] { Units const units(kTooMany); }));
    EXPECT_EQ("out of memory", WhatItThrows([] { SharedUnits const units(kTooMany, nullptr); }));
    EXPECT_EQ("out of memory", WhatItThrows([] { Units const units(kTooMany / 2); }));
}

TEST_F(BIBSharedBufferHandle, CountsInElementsAndBytes) {
    SharedUnits const units(3, nullptr);
    EXPECT_EQ(6U, units.GetSize());
    EXPECT_EQ(3U, units.GetNumElements());
    TBIBSharedBuffer<unsigned char> const odd(7, nullptr);
    EXPECT_EQ(3U, SharedUnits(odd.PeekSharedBuffer(), /*adopt=*/false).GetNumElements());
    EXPECT_FALSE(SharedUnits(nullptr, /*adopt=*/false).IsValid());
    EXPECT_FALSE(SharedUnits(SharedUnits()).IsValid());
}

TEST_F(BIBSharedBufferHandle, KeepsTheBlockAsLongAsAnybodyHoldsIt) {
    BIBSharedBuffer* raw = nullptr;
    {
        unsigned short const source[] = {1, 2, 3};
        Units units(source, 3);
        SharedUnits shared(units, &BIBDeleteSharedBuff);
        EXPECT_EQ(6U, shared.GetSize());
        EXPECT_EQ(0U, units.GetSize());
        SharedUnits const& same = shared;
        shared = same;
        SharedUnits copy;
        copy = shared;
        shared = SharedUnits();
        EXPECT_EQ(2, copy[1]);
        raw = copy.GetSharedBuffer();
    }
    SharedUnits const adopted(raw, /*adopt=*/true);
    EXPECT_EQ(3, adopted[2]);
}

TEST_F(BIBSharedBufferHandle, FreesABlockOnceWhenThereIsNoBuffer) {
    int deleted = 0;
    auto const make = [&deleted] {
        auto const count = [](void* block) { ++*static_cast<int*>(block); };
        CBIBSharedBuff::NewBuffer(sizeof deleted, &deleted, count, nullptr, nullptr);
    };
    bibrt::FailAllocation(1, /*andAllLater=*/false);
    EXPECT_EQ("out of memory", WhatItThrows(make));
    EXPECT_EQ(1, deleted);
    fLookup.Hide("BIBSharedBuffInterface.GetSize");
    MoveCounter();
    EXPECT_EQ("", WhatItThrows(make));
    EXPECT_EQ(2, deleted);
    fLookup.Show("BIBSharedBuffInterface.GetSize");
}

} // namespace BIB_T_NMT
