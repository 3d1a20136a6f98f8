#include "RuntimeFixture.h"

#include <cstdint>
#include <cstring>

namespace runtimetest {
namespace {

class MemoryTest : public RuntimeTest {
protected:
    _t_BIBMemoryInterface const& fMemory = Rows<_t_BIBMemoryInterface>();
};

TEST_F(MemoryTest, BlocksAreAlignedAndKnowTheSizeAskedFor) {
    for (unsigned long const size : {0UL, 1UL, 15UL, 16UL, 17UL, 4096UL, 1000003UL}) {
        void* const block = fMemory.Alloc(size);
        ASSERT_NE(block, nullptr) << size;
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignof(std::max_align_t), 0U);
        EXPECT_EQ(fMemory.GetBlockSize(block), size);
        std::memset(block, 1, size);
        fMemory.Free(block);
    }
}

TEST_F(MemoryTest, ImpossibleSizesGiveNullAndLeaveTheBlock) {
    void* const block = fMemory.Alloc(8);
    for (unsigned long const size : {~0UL, ~0UL - 15, ~0UL >> 1, 1UL << 62, 1UL << 47}) {
        EXPECT_EQ(fMemory.Alloc(size), nullptr) << size;
        EXPECT_EQ(fMemory.Realloc(block, size), nullptr) << size;
        EXPECT_EQ(
            Rows<_t_BIBSharedBuffInterface>().NewBuffer(size, nullptr, nullptr, nullptr, nullptr),
            nullptr);
    }
    EXPECT_EQ(fMemory.GetBlockSize(block), 8U);
    fMemory.Free(block);
}

TEST_F(MemoryTest, ReallocKeepsTheContentsThatFit) {
    char* block = static_cast<char*>(fMemory.Realloc(nullptr, 4));
    std::memcpy(block, "abc", 4);
    block = static_cast<char*>(fMemory.Realloc(block, 100000));
    EXPECT_STREQ(block, "abc");
    EXPECT_EQ(fMemory.GetBlockSize(block), 100000U);
    block = static_cast<char*>(fMemory.Realloc(block, 2));
    EXPECT_EQ(std::string(block, 2), "ab");
    fMemory.Free(block);
}

TEST_F(MemoryTest, NullIsAccepted) {
    fMemory.Free(nullptr);
    EXPECT_EQ(fMemory.GetBlockSize(nullptr), 0U);
}

TEST_F(MemoryTest, OrderedFailuresComeWhenOrdered) {
    bibrt::FailAllocation(2, /*andAllLater=*/false);
    void* const first = fMemory.Alloc(1);
    EXPECT_EQ(fMemory.Alloc(1), nullptr);
    void* const third = fMemory.Alloc(1);
    EXPECT_TRUE(first && third);
    bibrt::FailAllocation(1, /*andAllLater=*/true);
    EXPECT_EQ(fMemory.Alloc(1), nullptr);
    EXPECT_EQ(fMemory.Realloc(first, 2), nullptr);
    bibrt::ResetFailures();
    fMemory.Free(first);
    fMemory.Free(third);
}

TEST_F(MemoryTest, DiagnosticsCountBlocksAndAttempts) {
    unsigned long const blocks = bibrt::CountLive().fBlocks;
    unsigned long const attempts = bibrt::CountAllocations();
    void* const block = fMemory.Alloc(1);
    EXPECT_EQ(bibrt::CountLive().fBlocks, blocks + 1);
    EXPECT_EQ(bibrt::CountAllocations(), attempts + 1);
    fMemory.Free(block);
    EXPECT_EQ(bibrt::CountLive().fBlocks, blocks);
}

} // namespace
} // namespace runtimetest
