// The pool by itself: builds for tools that watch memory use none.
#include "runtime/objects/BlockPool.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/Together.h"

namespace bibrt {
namespace {

constexpr int kThreads = 4;
constexpr std::size_t kBlocks = 2000; // of each thread, which take many slabs

struct Block {
    void* fBytes;
    std::size_t fSize;
    unsigned char fMark;
};

// Blocks of all sizes, filled so that one that overlaps another shows.
std::vector<Block> MakeBlocks(int thread) {
    std::vector<Block> blocks;
    for (std::size_t number = 0; number < kBlocks; ++number) {
        std::size_t const size = 1 + number * 37 % kMaxPooled;
        auto const mark =
            static_cast<unsigned char>(number * 31 + static_cast<std::size_t>(thread));
        blocks.push_back({AllocPooled(size), size, mark});
        EXPECT_EQ(
            0U, reinterpret_cast<std::uintptr_t>(blocks.back().fBytes) % alignof(std::max_align_t));
        std::memset(blocks.back().fBytes, mark, size);
    }
    return blocks;
}

void CheckAndFree(Block const& block) {
    std::vector<unsigned char> const expected(block.fSize, block.fMark);
    EXPECT_EQ(0, std::memcmp(expected.data(), block.fBytes, block.fSize)) << block.fSize;
    FreePooled(block.fBytes);
}

using ThreadsBlocks = std::array<std::vector<Block>, kThreads>;

// Frees some of the blocks of every thread.
void FreeShare(ThreadsBlocks const& blocks, int thread) {
    auto number = static_cast<std::size_t>(thread);
    for (; number < kThreads * kBlocks; number += kThreads) {
        CheckAndFree(blocks.at(number / kBlocks)[number % kBlocks]);
    }
}

TEST(BlockPool, ThreadsFreeTheBlocksOfEachOther) {
    ThreadsBlocks blocks;
    for (int round = 0; round < 3; ++round) {
        support::DoTogether(kThreads, [&](int thread) {
            blocks.at(static_cast<std::size_t>(thread)) = MakeBlocks(thread);
        });
        support::DoTogether(kThreads, [&](int thread) { FreeShare(blocks, thread); });
    }
}

TEST(BlockPool, GivesFreedBlocksAgain) {
    void* const first = AllocPooled(100);
    FreePooled(first);
    EXPECT_EQ(first, AllocPooled(100));
    FreePooled(first);
}

} // namespace
} // namespace bibrt
