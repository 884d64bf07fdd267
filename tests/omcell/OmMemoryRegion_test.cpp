#include "omcell/OmMemoryRegion.h"

#include "tests/support/HeapInUse.h"
#include "tests/support/Poison.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <map>
#include <new>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr std::size_t Small = OmMemoryRegion::SmallLimit;
constexpr std::size_t Alignment = alignof(std::max_align_t);

bool IsAligned(void const* block) { return reinterpret_cast<std::uintptr_t>(block) % Alignment == 0; }

/// The books of a region, to compare before and after.
struct Books {
    std::size_t blocks;
    std::size_t bytes;
    std::size_t reserved;
    friend bool operator==(Books const& a, Books const& b) {
        return a.blocks == b.blocks && a.bytes == b.bytes && a.reserved == b.reserved;
    }
};

Books BooksOf(OmMemoryRegion const& region) {
    return {region.LiveBlocks(), region.LiveBytes(), region.ReservedBytes()};
}

/// What a block may hold: its bytes all carry one mark.
void Mark(void* block, std::size_t bytes, unsigned char mark) { std::memset(block, mark, bytes); }

bool IsMarked(void const* block, std::size_t bytes, unsigned char mark) {
    auto const* const first = static_cast<unsigned char const*>(block);
    return std::all_of(first, first + bytes, [mark](unsigned char byte) { return byte == mark; });
}

struct CountingDependent : OmMemoryRegion::Dependent {
    int drops = 0;
    OmMemoryRegion* regionWhenDropped = nullptr;

    CountingDependent() {
        drop = [](OmMemoryRegion::Dependent& self) {
            auto& counting = static_cast<CountingDependent&>(self);
            counting.drops += 1;
            counting.regionWhenDropped = self.region;
        };
    }
};

} // namespace

// --- blocks ----------------------------------------------------------------------------------------------------------

TEST(OmMemoryRegion, BlocksOfEverySizeAreAlignedForAnyStandardType) {
    OmMemoryRegion region(false);
    for (std::size_t bytes = 0; bytes <= Small + 100; ++bytes) {
        void* const block = region.Allocate(bytes);
        ASSERT_TRUE(IsAligned(block)) << bytes;
        Mark(block, bytes, 0xAB);
        void* const inHeap = OmMemoryRegion::DefaultHeap()->Allocate(bytes);
        ASSERT_TRUE(IsAligned(inHeap)) << bytes;
        OmMemoryRegion::Release(inHeap);
    }
}

TEST(OmMemoryRegion, ZeroBytesGiveDistinctBlocks) {
    OmMemoryRegion region(false);
    std::set<void*> blocks;
    for (int i = 0; i < 1000; ++i) {
        void* const block = region.Allocate(0);
        ASSERT_NE(block, nullptr);
        ASSERT_TRUE(blocks.insert(block).second);
    }
    EXPECT_EQ(region.LiveBlocks(), 1000U);
    for (void* const block : blocks) {
        OmMemoryRegion::Release(block);
    }
    EXPECT_EQ(region.LiveBlocks(), 0U);
    void* const a = OmMemoryRegion::DefaultHeap()->Allocate(0);
    void* const b = OmMemoryRegion::DefaultHeap()->Allocate(0);
    EXPECT_NE(a, b);
    OmMemoryRegion::Release(a);
    OmMemoryRegion::Release(b);
}

TEST(OmMemoryRegion, ReleaseOfNullDoesNothing) { EXPECT_NO_THROW(OmMemoryRegion::Release(nullptr)); }

TEST(OmMemoryRegion, EmptyRegionTakesNoMemory) {
    OmMemoryRegion const region(false);
    EXPECT_EQ(region.ReservedBytes(), 0U);
    EXPECT_EQ(region.LiveBlocks(), 0U);
    EXPECT_EQ(region.LiveBytes(), 0U);
    EXPECT_FALSE(region.IsDefaultHeap());
}

TEST(OmMemoryRegion, FlagHasNoEffect) {
    OmMemoryRegion shared(true);
    OmMemoryRegion plain(false);
    shared.Allocate(100);
    plain.Allocate(100);
    EXPECT_EQ(BooksOf(shared), BooksOf(plain));
    shared.WorkingRelease(true);
    plain.WorkingRelease(false);
    EXPECT_EQ(BooksOf(shared), BooksOf(plain));
}

// A table of a handful of texts must not cost a page after page.
TEST(OmMemoryRegion, FewBlocksTakeAFewKilobytes) {
    OmMemoryRegion region(false);
    for (int i = 0; i < 10; ++i) {
        region.Allocate(100);
    }
    EXPECT_LE(region.ReservedBytes(), 4096U);
}

TEST(OmMemoryRegion, ManySmallBlocksCostLittleMoreThanTheirBytes) {
    OmMemoryRegion region(false);
    for (int i = 0; i < 100000; ++i) {
        region.Allocate(60);
    }
    EXPECT_EQ(region.LiveBlocks(), 100000U);
    EXPECT_LE(region.ReservedBytes(), 100000U * 64U + (std::size_t{1} << 18));
}

// 2, 4, 8 ... 64 KiB, and 64 KiB from then on.
TEST(OmMemoryRegion, ChunksDoubleUpToABound) {
    OmMemoryRegion region(false);
    std::vector<std::size_t> chunks;
    while (chunks.size() < 12) {
        std::size_t const before = region.ReservedBytes();
        region.Allocate(16 * (region.LiveBlocks() % 60)); // no size often enough for a page
        if (region.ReservedBytes() != before) {
            chunks.push_back(region.ReservedBytes() - before);
        }
    }
    EXPECT_EQ(chunks, (std::vector<std::size_t>{2048, 4096, 8192, 16384, 32768, 65536, 65536, 65536, 65536, 65536,
                                                65536, 65536}));
}

// A script of requests and releases of all sizes against a map of what must be there.
TEST(OmMemoryRegion, LiveBlocksNeverShareAByte) {
    for (std::uint64_t const seed : {7U, 8U, 9U}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937_64 random(seed);
        OmMemoryRegion region(false);
        struct Held {
            std::size_t bytes;
            unsigned char mark;
        };
        std::map<unsigned char*, Held> held;
        for (int step = 0; step < 20000; ++step) {
            if (held.empty() || random() % 5 < 3) {
                std::size_t const bytes = random() % 20 == 0 ? random() % 5000 : random() % 200;
                auto* const block = static_cast<unsigned char*>(region.Allocate(bytes));
                auto const mark = static_cast<unsigned char>(random());
                Mark(block, bytes, mark);
                auto const place = held.emplace(block, Held{bytes, mark});
                ASSERT_TRUE(place.second);
                auto const next = std::next(place.first);
                ASSERT_TRUE(next == held.end() || block + bytes <= next->first);
                ASSERT_TRUE(place.first == held.begin() ||
                            std::prev(place.first)->first + std::prev(place.first)->second.bytes <= block);
            } else {
                auto const victim = std::next(held.begin(), static_cast<std::ptrdiff_t>(random() % held.size() % 50));
                ASSERT_TRUE(IsMarked(victim->first, victim->second.bytes, victim->second.mark));
                OmMemoryRegion::Release(victim->first);
                held.erase(victim);
            }
            ASSERT_EQ(region.LiveBlocks(), held.size());
        }
        for (auto const& [block, content] : held) {
            ASSERT_TRUE(IsMarked(block, content.bytes, content.mark));
            OmMemoryRegion::Release(block);
        }
        EXPECT_EQ(region.LiveBlocks(), 0U);
        EXPECT_EQ(region.LiveBytes(), 0U);
    }
}

// --- recycling and large blocks --------------------------------------------------------------------------------------

TEST(OmMemoryRegion, ReleasedSmallBlockServesTheNextRequestOfItsSize) {
    OmMemoryRegion region(false);
    void* const block = region.Allocate(50);
    region.Allocate(50);
    OmMemoryRegion::Release(block);
    EXPECT_EQ(region.Allocate(49), block);
}

TEST(OmMemoryRegion, ReplacingBlocksForHoursDoesNotGrowTheRegion) {
    OmMemoryRegion region(false);
    std::vector<void*> blocks;
    for (std::size_t bytes = 0; bytes <= Small; bytes += 8) {
        blocks.push_back(region.Allocate(bytes));
    }
    std::size_t const reserved = region.ReservedBytes();
    for (int round = 0; round < 1000; ++round) {
        for (std::size_t k = 0; k < blocks.size(); ++k) {
            OmMemoryRegion::Release(blocks[k]);
            blocks[k] = region.Allocate(k * 8);
        }
    }
    EXPECT_EQ(region.ReservedBytes(), reserved);
}

TEST(OmMemoryRegion, BlockAtTheLimitIsSmallAndTheNextOneStandsAlone) {
    OmMemoryRegion region(false);
    OmMemoryRegion::Release(region.Allocate(Small));
    std::size_t const reserved = region.ReservedBytes();
    EXPECT_GT(reserved, Small); // the chunk stays
    void* const large = region.Allocate(Small + 1);
    EXPECT_GT(region.ReservedBytes(), reserved + Small);
    OmMemoryRegion::Release(large);
    EXPECT_EQ(region.ReservedBytes(), reserved);
}

TEST(OmMemoryRegion, LargeBlocksGoBackInAnyOrder) {
    for (int order = 0; order < 6; ++order) {
        OmMemoryRegion region(false);
        std::vector<void*> blocks;
        for (std::size_t bytes : {2000U, 300000U, 1017U}) {
            blocks.push_back(region.Allocate(bytes));
            Mark(blocks.back(), bytes, 0x5A);
        }
        EXPECT_EQ(region.LiveBlocks(), 3U);
        EXPECT_EQ(region.LiveBytes(), 2000U + 300000U + 1017U);
        std::vector<std::size_t> sequence{0, 1, 2};
        for (int k = 0; k < order; ++k) {
            std::next_permutation(sequence.begin(), sequence.end());
        }
        for (std::size_t const k : sequence) {
            OmMemoryRegion::Release(blocks[k]);
        }
        EXPECT_EQ(BooksOf(region), (Books{0, 0, 0}));
    }
}

TEST(OmMemoryRegion, LargeBlocksThatAreLeftGoWithTheRegion) {
    OmMemoryRegion region(false);
    region.Allocate(100000);
    region.Allocate(200000);
    EXPECT_EQ(region.LiveBlocks(), 2U); // the leak checker sees the rest
}

TEST(OmMemoryRegion, LiveBytesCountWhatWasSetAside) {
    OmMemoryRegion region(false);
    void* const one = region.Allocate(1);
    EXPECT_EQ(region.LiveBytes(), 24U);
    void* const more = region.Allocate(25);
    EXPECT_EQ(region.LiveBytes(), 24U + 56U);
    void* const large = region.Allocate(5001);
    EXPECT_EQ(region.LiveBytes(), 24U + 56U + 5001U);
    OmMemoryRegion::Release(more);
    OmMemoryRegion::Release(large);
    EXPECT_EQ(region.LiveBytes(), 24U);
    OmMemoryRegion::Release(one);
    EXPECT_EQ(region.LiveBytes(), 0U);
}

// Sums with the head of a block must not wrap round to something small.
TEST(OmMemoryRegion, AbsurdRequestsThrowAndChangeNothing) {
    OmMemoryRegion region(false);
    region.Allocate(100);
    Books const before = BooksOf(region);
    std::size_t const most = std::numeric_limits<std::size_t>::max();
    for (std::size_t const less : {0U, 1U, 7U, 8U, 15U, 16U, 17U, 40U, 47U, 48U, 49U, 4096U}) {
        EXPECT_THROW(region.Allocate(most - less), std::bad_alloc) << less;
        EXPECT_THROW(OmMemoryRegion::DefaultHeap()->Allocate(most - less), std::bad_alloc) << less;
    }
    EXPECT_EQ(BooksOf(region), before);
    EXPECT_NE(region.Allocate(100), nullptr);
}

// --- the default heap ------------------------------------------------------------------------------------------------

TEST(OmMemoryRegion, DefaultHeapIsOneAndStandsForNull) {
    OmMemoryRegion* const heap = OmMemoryRegion::DefaultHeap();
    ASSERT_NE(heap, nullptr);
    EXPECT_EQ(OmMemoryRegion::DefaultHeap(), heap);
    EXPECT_EQ(OmMemoryRegion::OrDefault(nullptr), heap);
    EXPECT_TRUE(heap->IsDefaultHeap());
    OmMemoryRegion region(false);
    EXPECT_EQ(OmMemoryRegion::OrDefault(&region), &region);
}

TEST(OmMemoryRegion, DefaultHeapReportsNoCounts) {
    OmMemoryRegion* const heap = OmMemoryRegion::DefaultHeap();
    void* const small = heap->Allocate(10);
    void* const large = heap->Allocate(100000);
    EXPECT_EQ(BooksOf(*heap), (Books{0, 0, 0}));
    OmMemoryRegion::Release(small);
    OmMemoryRegion::Release(large);
}

TEST(OmMemoryRegion, SweepOfTheDefaultHeapDoesNothing) {
    OmMemoryRegion* const heap = OmMemoryRegion::DefaultHeap();
    std::size_t const inUse = omtest::HeapInUse();
    for (int i = 0; i < 1000; ++i) {
        void* const block = heap->Allocate(100);
        heap->WorkingRelease(false);
        OmMemoryRegion::Release(block);
    }
    EXPECT_LT(omtest::HeapInUse(), inUse + 1000); // a byte a block would be too much
    void* const after = heap->Allocate(10);
    Mark(after, 10, 1);
    OmMemoryRegion::Release(after);
}

TEST(OmMemoryRegion, DefaultHeapKeepsNoDependents) {
    CountingDependent dependent;
    OmMemoryRegion::DefaultHeap()->Attach(dependent);
    EXPECT_EQ(dependent.region, nullptr);
    OmMemoryRegion::Detach(dependent);
    OmMemoryRegion::DefaultHeap()->WorkingRelease(false);
    EXPECT_EQ(dependent.drops, 0);
}

TEST(OmMemoryRegion, DefaultHeapServesThreadsAtOnce) {
    std::vector<std::thread> threads;
    std::vector<int> wrong(4, 0);
    for (std::size_t t = 0; t < wrong.size(); ++t) {
        threads.emplace_back([t, &wrong] {
            auto const mark = static_cast<unsigned char>(t + 1);
            std::vector<void*> blocks;
            for (int i = 0; i < 5000; ++i) {
                blocks.push_back(OmMemoryRegion::DefaultHeap()->Allocate(32));
                Mark(blocks.back(), 32, mark);
            }
            for (void* const block : blocks) {
                wrong[t] += IsMarked(block, 32, mark) ? 0 : 1;
                OmMemoryRegion::Release(block);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, std::vector<int>(4, 0));
}

// --- the sweep -------------------------------------------------------------------------------------------------------

TEST(OmMemoryRegion, BlocksStayReadableAfterTheSweepAndReleaseDoesNothing) {
    OmMemoryRegion region(false);
    void* const small = region.Allocate(100);
    void* const large = region.Allocate(100000);
    Mark(small, 100, 0x11);
    Mark(large, 100000, 0x22);
    std::size_t const reserved = region.ReservedBytes();
    region.WorkingRelease(false);
    EXPECT_EQ(region.LiveBlocks(), 0U);
    EXPECT_EQ(region.LiveBytes(), 0U);
    EXPECT_EQ(region.ReservedBytes(), reserved);
    for (int i = 0; i < 2; ++i) {
        OmMemoryRegion::Release(small);
        OmMemoryRegion::Release(large);
        EXPECT_TRUE(IsMarked(small, 100, 0x11));
        EXPECT_TRUE(IsMarked(large, 100000, 0x22));
        EXPECT_EQ(BooksOf(region), (Books{0, 0, reserved}));
    }
}

TEST(OmMemoryRegion, SecondSweepDoesNothing) {
    OmMemoryRegion region(false);
    region.Allocate(10);
    region.WorkingRelease(false);
    region.WorkingRelease(false);
    EXPECT_EQ(region.LiveBlocks(), 0U);
}

TEST(OmMemoryRegion, SweepDropsEveryDependentOnceAfterTakingItOff) {
    CountingDependent a;
    CountingDependent b;
    CountingDependent detached;
    {
        OmMemoryRegion region(false);
        region.Attach(a);
        region.Attach(detached);
        region.Attach(b);
        EXPECT_EQ(a.region, &region);
        OmMemoryRegion::Detach(detached);
        OmMemoryRegion::Detach(detached);
        region.WorkingRelease(false);
        EXPECT_EQ(a.drops, 1);
        EXPECT_EQ(b.drops, 1);
        EXPECT_EQ(a.regionWhenDropped, nullptr);
    }
    EXPECT_EQ(a.drops, 1);
    EXPECT_EQ(b.drops, 1);
    EXPECT_EQ(detached.drops, 0);
}

TEST(OmMemoryRegion, DestructorDropsWhatNoSweepDropped) {
    CountingDependent before;
    CountingDependent after;
    {
        OmMemoryRegion region(false);
        region.Attach(before);
        region.WorkingRelease(false);
        region.Attach(after);
        EXPECT_EQ(after.drops, 0);
    }
    EXPECT_EQ(before.drops, 1);
    EXPECT_EQ(after.drops, 1);
}

// First, middle and last of the list.
TEST(OmMemoryRegion, DependentsDetachFromAnyPlace) {
    for (std::size_t gone = 0; gone < 3; ++gone) {
        CountingDependent dependents[3];
        OmMemoryRegion region(false);
        for (CountingDependent& dependent : dependents) {
            region.Attach(dependent);
        }
        OmMemoryRegion::Detach(dependents[gone]);
        region.WorkingRelease(false);
        for (std::size_t k = 0; k < 3; ++k) {
            EXPECT_EQ(dependents[k].drops, k == gone ? 0 : 1);
        }
    }
}

TEST(OmMemoryRegion, MillionBlocksChainedInsideARegionGoInOneSweep) {
    struct Link {
        Link* next;
    };
    OmMemoryRegion region(false);
    Link* chain = nullptr;
    for (int i = 0; i < 1000000; ++i) {
        chain = new (region.Allocate(sizeof(Link))) Link{chain};
    }
    EXPECT_EQ(region.LiveBlocks(), 1000000U);
    region.WorkingRelease(false);
    EXPECT_EQ(region.LiveBlocks(), 0U);
    int readable = 0;
    for (Link const* link = chain; link != nullptr; link = link->next) {
        ++readable;
    }
    EXPECT_EQ(readable, 1000000);
}

// --- poison ----------------------------------------------------------------------------------------------------------

// Under the address sanitizer a released block, the rest of a block's size and what was never handed out are traps;
// elsewhere the same storage is at least handed out again, and only to one owner.
TEST(OmMemoryRegion, ReleasedAndUnusedStorageIsOutOfBounds) {
    OmMemoryRegion region(false);
    auto* const block = static_cast<char*>(region.Allocate(20));
    auto* const behind = static_cast<char*>(region.Allocate(20));
#if defined(OM_TEST_ADDRESS_SANITIZER)
    EXPECT_TRUE(omtest::IsOpen(block, 20));
    EXPECT_TRUE(omtest::IsClosed(behind + 24, 100)); // never handed out
    OmMemoryRegion::Release(block);
    EXPECT_TRUE(omtest::IsClosed(block, 24));
    EXPECT_EQ(region.Allocate(17), block);
    EXPECT_TRUE(omtest::IsOpen(block, 17));
#else
    EXPECT_GE(behind - block, 20);
    OmMemoryRegion::Release(block);
    EXPECT_EQ(region.Allocate(17), block);
    EXPECT_NE(region.Allocate(17), block);
#endif
}

#if defined(OM_TEST_ADDRESS_SANITIZER)
TEST(OmMemoryRegion, ByteBehindALargeBlockAndOneOfTheDefaultHeapIsOutOfBounds) {
    OmMemoryRegion region(false);
    for (std::size_t bytes = Small + 1; bytes < Small + 80; ++bytes) {
        auto* const large = static_cast<char*>(region.Allocate(bytes));
        auto* const inHeap = static_cast<char*>(OmMemoryRegion::DefaultHeap()->Allocate(bytes));
        ASSERT_TRUE(omtest::IsOpen(large, bytes));
        ASSERT_TRUE(omtest::IsOpen(inHeap, bytes));
        OmMemoryRegion::Release(inHeap);
    }
}
#endif
