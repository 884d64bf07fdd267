// What a region does with a size once it has handed out many blocks of it.

#include "omcell/OmMemoryRegion.h"

#include "tests/support/HeapInUse.h"
#include "tests/support/Poison.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <set>
#include <vector>

namespace {

constexpr std::size_t BytesBeforePages = std::size_t{1} << 16;

std::uintptr_t AddressOf(void const* block) { return reinterpret_cast<std::uintptr_t>(block); }

/// Blocks of one size until the region takes further ones from pages.
std::vector<void*> FillChunks(OmMemoryRegion& region, std::size_t bytes) {
    std::vector<void*> blocks;
    for (std::size_t taken = 0; taken < BytesBeforePages + 2 * 1024; taken += std::max<std::size_t>(bytes, 1)) {
        blocks.push_back(region.Allocate(bytes));
    }
    return blocks;
}

bool IsOfPage(void const* block) { return AddressOf(block) % 32 == 0; }

void ReleaseAll(std::vector<void*> const& blocks) {
    std::for_each(blocks.begin(), blocks.end(), OmMemoryRegion::Release);
}

} // namespace

TEST(OmMemoryRegionPages, BlocksStandAtMultiplesOfThirtyTwoWithoutAWordBetween) {
    for (std::size_t const bytes : {1U, 31U, 32U, 33U, 64U, 65U, 500U, 1016U}) {
        OmMemoryRegion region(false);
        FillChunks(region, bytes);
        std::size_t const stride = (bytes + 31) / 32 * 32;
        std::size_t const live = region.LiveBytes();
        auto const first = AddressOf(region.Allocate(bytes));
        auto const second = AddressOf(region.Allocate(bytes));
        EXPECT_EQ(first % 32, 0U) << bytes;
        EXPECT_EQ(second - first, stride) << bytes;
        EXPECT_EQ(region.LiveBytes() - live, 2 * stride) << bytes;
    }
}

// The allocator's own words, and what it sets aside to look for an even place, fit into what is left of 64 KiB.
TEST(OmMemoryRegionPages, PageIsTakenShortByWhatTheAllocatorNeedsBetweenTwo) {
    OmMemoryRegion region(false);
    FillChunks(region, 64);
    std::vector<std::size_t> pages;
    while (pages.size() < 3) {
        std::size_t const before = region.ReservedBytes();
        region.Allocate(64);
        if (region.ReservedBytes() != before) {
            pages.push_back(region.ReservedBytes() - before);
        }
    }
    EXPECT_EQ(pages, (std::vector<std::size_t>(3, 65536 - 80)));
}

// 16 bytes are the most that any standard type asks for, and the least that keeps the two kinds of block apart.
TEST(OmMemoryRegionPages, BlocksOfTheDefaultHeapAndLargeOnesAreNeverTakenForThem) {
    OmMemoryRegion region(false);
    std::vector<void*> blocks;
    for (std::size_t bytes = 0; bytes < 3000; ++bytes) {
        blocks.push_back(OmMemoryRegion::DefaultHeap()->Allocate(bytes));
        EXPECT_EQ(AddressOf(blocks.back()) % 32, 16U);
        std::memset(blocks.back(), 0, bytes);
        blocks.push_back(region.Allocate(OmMemoryRegion::SmallLimit + 1 + bytes));
        EXPECT_EQ(AddressOf(blocks.back()) % 32, 16U);
        std::memset(blocks.back(), 0, OmMemoryRegion::SmallLimit + 1 + bytes);
    }
    ReleaseAll(blocks);
    EXPECT_EQ(region.ReservedBytes(), 0U);
}

TEST(OmMemoryRegionPages, DefaultHeapGivesBackWhatItTook) {
    auto const takeAndRelease = [] {
        std::vector<void*> blocks;
        for (std::size_t bytes = 0; bytes < 40; ++bytes) {
            blocks.push_back(OmMemoryRegion::DefaultHeap()->Allocate(bytes));
        }
        ReleaseAll(blocks);
    };
    EXPECT_LT(omtest::HeapGrowth(1000, takeAndRelease), 1000); // a byte a round would be too much
}

TEST(OmMemoryRegionPages, ReleasedBlockServesTheNextRequestOfItsSize) {
    OmMemoryRegion region(false);
    FillChunks(region, 50);
    FillChunks(region, 70);
    void* const block = region.Allocate(50);
    void* const other = region.Allocate(50);
    void* const larger = region.Allocate(70);
    OmMemoryRegion::Release(block);
    OmMemoryRegion::Release(other);
    OmMemoryRegion::Release(larger);
    EXPECT_EQ(region.Allocate(40), other);
    EXPECT_EQ(region.Allocate(64), block);
    EXPECT_EQ(region.Allocate(96), larger);
}

TEST(OmMemoryRegionPages, NewPageIsTakenOnlyWhenAllThatWasCutFromChunksIsInUse) {
    OmMemoryRegion region(false);
    std::vector<void*> const early = FillChunks(region, 60);
    auto const cut = std::count_if(early.begin(), early.end(), [](void* block) { return !IsOfPage(block); });
    for (void* const block : early) {
        if (!IsOfPage(block)) {
            OmMemoryRegion::Release(block);
        }
    }
    std::ptrdiff_t again = 0;
    for (std::size_t const reserved = region.ReservedBytes(); region.ReservedBytes() == reserved;) {
        again += IsOfPage(region.Allocate(60)) ? 0 : 1;
    }
    EXPECT_EQ(again, cut);
}

TEST(OmMemoryRegionPages, BooksForgetAReleasedBlockOfEverySize) {
    for (std::size_t bytes = 8; bytes <= OmMemoryRegion::SmallLimit; bytes += 8) {
        OmMemoryRegion region(false);
        FillChunks(region, bytes);
        std::size_t const live = region.LiveBytes();
        std::vector<void*> const blocks{region.Allocate(bytes), region.Allocate(bytes)};
        ASSERT_TRUE(IsOfPage(blocks[0]) && IsOfPage(blocks[1])) << bytes;
        ReleaseAll(blocks);
        ASSERT_EQ(region.LiveBytes(), live) << bytes;
        std::memset(region.Allocate(bytes), 0, bytes);
    }
}

TEST(OmMemoryRegionPages, WhatWasCutFromChunksComesRoundAgainBeforeANewPageDoes) {
    OmMemoryRegion region(false);
    std::vector<void*> const early = FillChunks(region, 60);
    std::vector<void*> late;
    std::size_t reserved = region.ReservedBytes();
    while (region.ReservedBytes() == reserved) {
        late.push_back(region.Allocate(60));
    }
    reserved = region.ReservedBytes();
    ReleaseAll(early);
    for (std::size_t i = 0; i < early.size(); ++i) {
        region.Allocate(60);
    }
    EXPECT_LE(region.ReservedBytes(), reserved + BytesBeforePages);
    std::size_t const enough = region.ReservedBytes();
    for (int round = 0; round < 20; ++round) {
        ReleaseAll(late);
        for (void*& block : late) {
            block = region.Allocate(60);
        }
        EXPECT_EQ(region.ReservedBytes(), enough);
    }
}

// A released block keeps a link in its first word, which the block may be shorter than.
TEST(OmMemoryRegionPages, BlocksShorterThanAWordGoBack) {
    for (std::size_t bytes = 0; bytes < 8; ++bytes) {
        OmMemoryRegion region(false);
        while (AddressOf(region.Allocate(bytes)) % 32 != 0) {
        }
        void* const first = region.Allocate(bytes);
        void* const second = region.Allocate(bytes);
        OmMemoryRegion::Release(first);
        OmMemoryRegion::Release(second);
        EXPECT_EQ(region.Allocate(bytes), second);
        EXPECT_EQ(region.Allocate(bytes), first);
    }
}

#if !defined(OM_TEST_ADDRESS_SANITIZER)
// An allocator that serves a page with a mapping of its own, twice as long, keeps twice of what the books say.
TEST(OmMemoryRegionPages, AllocatorHoldsLittleMoreThanTheBooksSay) {
    std::size_t const before = omtest::HeapInUse();
    OmMemoryRegion region(false);
    for (int i = 0; i < 200000; ++i) {
        region.Allocate(60);
    }
    EXPECT_LT(omtest::HeapInUse() - before, region.ReservedBytes() * 21 / 20);
}
#endif

// Every size at once, chunks and pages side by side, released in any order.
TEST(OmMemoryRegionPages, LiveBlocksNeverShareAByte) {
    std::mt19937_64 random(11);
    OmMemoryRegion region(false);
    struct Held {
        unsigned char* block;
        std::size_t bytes;
        unsigned char mark;
    };
    std::vector<Held> held;
    std::size_t broken = 0;
    auto const letGo = [&](std::size_t at) {
        Held const gone = held[at];
        broken +=
            std::all_of(gone.block, gone.block + gone.bytes, [&](unsigned char b) { return b == gone.mark; }) ? 0 : 1;
        OmMemoryRegion::Release(gone.block);
        held[at] = held.back();
        held.pop_back();
    };
    for (int step = 0; step < 60000; ++step) {
        std::size_t const bytes = random() % 8 == 0 ? random() % 1100 : 20 + random() % 100;
        auto const mark = static_cast<unsigned char>(random());
        held.push_back({static_cast<unsigned char*>(region.Allocate(bytes)), bytes, mark});
        std::memset(held.back().block, mark, bytes);
        if (random() % 3 == 0) {
            letGo(random() % held.size());
        }
        if (step % 20000 == 19999) {
            while (held.size() > 100) {
                letGo(random() % held.size());
            }
        }
        ASSERT_EQ(region.LiveBlocks(), held.size());
    }
    while (!held.empty()) {
        letGo(held.size() - 1);
    }
    EXPECT_EQ(broken, 0U);
    EXPECT_EQ(region.LiveBytes(), 0U);
}

TEST(OmMemoryRegionPages, BlocksStayReadableAfterTheSweepAndReleaseDoesNothing) {
    OmMemoryRegion region(false);
    FillChunks(region, 100);
    auto* const block = static_cast<char*>(region.Allocate(100));
    std::memset(block, 7, 100);
    region.WorkingRelease(false);
    std::size_t const reserved = region.ReservedBytes();
    OmMemoryRegion::Release(block);
    OmMemoryRegion::Release(block);
    EXPECT_TRUE(std::all_of(block, block + 100, [](char byte) { return byte == 7; }));
    EXPECT_EQ(region.LiveBlocks(), 0U);
    EXPECT_EQ(region.LiveBytes(), 0U);
    EXPECT_EQ(region.ReservedBytes(), reserved);
}

TEST(OmMemoryRegionPages, EndGivesPagesBack) {
    std::size_t const before = omtest::HeapInUse();
    for (int round = 0; round < 20; ++round) {
        OmMemoryRegion region(false);
        for (int i = 0; i < 20000; ++i) {
            region.Allocate(60);
        }
        EXPECT_GT(region.ReservedBytes(), 20000U * 60U);
    }
    EXPECT_LT(omtest::HeapInUse(), before + BytesBeforePages);
}

#if defined(OM_TEST_ADDRESS_SANITIZER)
TEST(OmMemoryRegionPages, ReleasedAndUnusedStorageIsPoisoned) {
    OmMemoryRegion region(false);
    FillChunks(region, 20);
    auto* const block = static_cast<char*>(region.Allocate(20));
    auto* const behind = static_cast<char*>(region.Allocate(20));
    EXPECT_TRUE(omtest::IsOpen(block, 20));
    EXPECT_TRUE(omtest::IsClosed(behind + 32, 32)); // never handed out
    OmMemoryRegion::Release(behind);
    OmMemoryRegion::Release(block);
    EXPECT_TRUE(omtest::IsClosed(block, 64)); // both
    EXPECT_EQ(region.Allocate(4), block);
    EXPECT_TRUE(omtest::IsOpen(block, 4));
    EXPECT_EQ(region.Allocate(0), behind);
    EXPECT_TRUE(omtest::IsClosed(behind, 32));
}
#endif
