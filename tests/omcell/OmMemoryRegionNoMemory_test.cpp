// What holds when the allocator refuses a region a chunk, a page or a large block, and what a region asks it for.

#include "omcell/OmMemoryRegion.h"

#include "omcell/OmCellMetaData.h"
#include "omcell/OmStringCell.h"
#include "tests/support/FailingMalloc.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace {

using Books = std::array<std::size_t, 3>;

Books BooksOf(OmMemoryRegion const& region) {
    return {region.LiveBlocks(), region.LiveBytes(), region.ReservedBytes()};
}

bool IsOfPage(void const* block) { return reinterpret_cast<std::uintptr_t>(block) % 32 == 0; }

/// How many blocks a region gives before one comes from a page.
std::size_t BlocksBeforePages(OmMemoryRegion& region, std::size_t bytes) {
    std::size_t count = 0;
    while (!IsOfPage(region.Allocate(bytes))) {
        ++count;
    }
    return count;
}

OmCellMetaData WithFootnotes() {
    OmCellMetaData meta;
    meta.footnotes = {1, 2};
    meta.markers = {"a"};
    return meta;
}

} // namespace

// 5000 blocks of a size: chunks of every length, then pages; each is refused once, at the very request that needs it.
TEST(OmMemoryRegionNoMemory, RefusedChunksPagesAndLargeBlocksChangeNothing) {
    OmMemoryRegion region(false);
    int refused = 0;
    for (std::size_t const bytes : {20U, 1000U, 5000U}) {
        for (int i = 0; i < 5000; ++i) {
            Books const before = BooksOf(region);
            int const count =
                omtest::FailEachMalloc([&] { region.Allocate(bytes); }, [&] { ASSERT_EQ(BooksOf(region), before); });
            ASSERT_GE(count, 0);
            ASSERT_EQ(region.LiveBlocks(), before[0] + 1);
            refused += count;
        }
    }
    EXPECT_GT(refused, 5000 + 50);
}

TEST(OmMemoryRegionNoMemory, RefusalsDoNotBringPagesForward) {
    OmMemoryRegion spared(false);
    OmMemoryRegion refused(false);
    for (int i = 0; i < 3000; ++i) {
        omtest::mallocBooks.untilFailure = 0;
        EXPECT_THROW(refused.Allocate(1000), std::bad_alloc);
        omtest::mallocBooks.untilFailure = -1;
    }
    EXPECT_EQ(BlocksBeforePages(refused, 1000), BlocksBeforePages(spared, 1000));
}

TEST(OmMemoryRegionNoMemory, DefaultHeapHandsTheRefusalOn) {
    void* block = nullptr;
    EXPECT_EQ(omtest::FailEachMalloc([&] { block = OmMemoryRegion::DefaultHeap()->Allocate(10); }, [] {}), 1);
    OmMemoryRegion::Release(block);
}

TEST(OmMemoryRegionNoMemory, ReservedBytesAreWhatTheAllocatorWasAskedFor) {
    for (std::size_t const bytes : {10U, 60U, 500U, 1016U, 1017U, 5000U}) {
        OmMemoryRegion region(false);
        omtest::MallocBooks const asked = omtest::Asked([&] {
            for (int i = 0; i < 4000; ++i) {
                region.Allocate(bytes);
            }
        });
        EXPECT_EQ(region.ReservedBytes(), asked.bytes) << bytes;
    }
}

// Two megabytes in small blocks of all sizes, none of which gets as far as a page.
TEST(OmMemoryRegionNoMemory, ChunksGrowSoThatTheAllocatorIsSeldomAsked) {
    OmMemoryRegion region(false);
    omtest::MallocBooks const asked = omtest::Asked([&] {
        for (int round = 0; round < 60; ++round) {
            for (std::size_t bytes = 8; bytes <= OmMemoryRegion::SmallLimit; bytes += 16) {
                region.Allocate(bytes);
            }
        }
    });
    EXPECT_GT(region.LiveBytes(), 1900000U);
    EXPECT_LT(asked.requests, 50U);
}

// --- string cells, whose blocks and records are asked for one by one -------------------------------------------------

TEST(OmMemoryRegionNoMemory, RefusedStringCellLeavesNothing) {
    for (std::size_t const length : {5U, 100U, 2000U}) {
        OmMemoryRegion arena(false);
        std::unique_ptr<OmStringCell> cell;
        EXPECT_GT(
            omtest::FailEachMalloc([&] { cell.reset(new (&arena) OmStringCell(std::string(length, 'x'), &arena)); },
                                   [&] { EXPECT_EQ(arena.LiveBlocks(), 0U); }),
            0);
        EXPECT_EQ(cell->AsString(), std::string(length, 'x'));
    }
}

// Inside the object, behind it and in two blocks; with a record outside the arena, which a clone asks for last.
TEST(OmMemoryRegionNoMemory, RefusedCloneLeavesNothing) {
    OmCellMetaData const meta = WithFootnotes();
    for (std::size_t const length : {5U, 100U, 2000U}) {
        OmStringCell cell(std::string(length, 'x'));
        cell.setMeta(&meta);
        OmMemoryRegion arena(false);
        std::unique_ptr<OmCellText> clone;
        EXPECT_GT(omtest::FailEachMalloc([&] { clone.reset(cell.Clone(&arena)); },
                                         [&] { EXPECT_EQ(arena.LiveBlocks(), 0U); }),
                  0);
        EXPECT_EQ(clone->AsString(), std::string(length, 'x'));
        EXPECT_EQ(clone->Footnotes(), meta.footnotes);
    }
}

TEST(OmMemoryRegionNoMemory, RefusedChangeOfAStringCellChangesNothing) {
    for (std::size_t const before : {5U, 20U, 255U, 2000U}) {
        for (std::size_t const after : {30U, 60U, 254U, 3000U}) {
            OmStringCell cell(std::string(before, 'x')); // in the default heap, where each block is a request
            std::string const given = cell.AsString();
            std::string const changed(after, 'y');
            auto const isUnchanged = [&] {
                EXPECT_EQ(cell.AsString(), given);
                EXPECT_EQ(cell.AsU8String(), given);
                EXPECT_EQ(cell.AsEngString(), given);
                EXPECT_EQ(cell.AltText(), "");
            };
            EXPECT_EQ(omtest::FailEachMalloc([&] { cell.SetU8String(changed); }, isUnchanged), 1);
            EXPECT_EQ(cell.AsU8String(), changed);
            EXPECT_EQ(cell.AsString(), given);
        }
    }
}
