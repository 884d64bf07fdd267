#include "backend/tables/om/OmVector.h"
#include "omcell/OmMemoryRegion.h"
#include "tests/support/InstanceTracker.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using omtest::CopyFailed;
using omtest::InstanceBooks;
using omtest::Tracked;
using Ints = std::vector<int>;
using Sizes = std::vector<std::size_t>;

Ints Elements(OmVector<int> const& vector) { return Ints(vector.begin(), vector.end()); }

Ints Values(OmVector<Tracked> const& vector) {
    Ints values;
    for (Tracked const& element : vector) {
        values.push_back(element.value);
    }
    return values;
}

OmVector<int> Counting(int count, OmMemoryRegion* region = nullptr) {
    OmVector<int> vector(region);
    for (int k = 0; k < count; ++k) {
        vector.push_back(k);
    }
    return vector;
}

/// Appends `count` elements 0, 1, 2 ... and forgets how they got there.
void Fill(OmVector<Tracked>& vector, InstanceBooks& books, int count) {
    for (int k = 0; k < count; ++k) {
        vector.emplace_back(books, k);
    }
    books.Forget();
}

/// The capacities seen while elements are appended, each once.
Sizes CapacitiesWhileAppending(OmVector<int>& vector, int count) {
    Sizes seen;
    for (int k = 0; k < count; ++k) {
        vector.push_back(k);
        if (seen.empty() || seen.back() != vector.capacity()) {
            seen.push_back(vector.capacity());
        }
    }
    return seen;
}

} // namespace

// --- storage ---------------------------------------------------------------------------------------------------------

TEST(OmVector, NullRegionIsReplacedByTheDefaultHeap) {
    EXPECT_EQ(OmVector<int>().Region(), OmMemoryRegion::DefaultHeap());
    EXPECT_EQ(OmVector<int>(nullptr).Region(), OmMemoryRegion::DefaultHeap());
    OmVector<int> const source;
    EXPECT_EQ(OmVector<int>(source, nullptr).Region(), OmMemoryRegion::DefaultHeap());
}

TEST(OmVector, FieldsAreRegionFirstLastEnd) {
    static_assert(std::is_standard_layout_v<OmVector<int>>);
    OmMemoryRegion region(false);
    OmVector<int> vector(&region);
    vector.reserve(6);
    vector.push_back(7);
    void const* fields[4];
    static_assert(sizeof(fields) == sizeof(vector));
    std::memcpy(fields, &vector, sizeof(fields));
    EXPECT_EQ(fields[0], &region);
    EXPECT_EQ(fields[1], vector.data());
    EXPECT_EQ(fields[2], vector.data() + 1);
    EXPECT_EQ(fields[3], vector.data() + 6);
}

TEST(OmVector, EmptyVectorTakesNoStorage) {
    OmMemoryRegion region(false);
    OmVector<int> vector(&region);
    vector.reserve(0);
    OmVector<int> const copy = vector;
    EXPECT_EQ(region.LiveBlocks(), 0U);
    EXPECT_EQ(vector.data(), nullptr);
    EXPECT_EQ(copy.capacity(), 0U);
}

TEST(OmVector, CapacityGrowsFourEightSixteen) {
    OmVector<int> vector;
    EXPECT_EQ(CapacitiesWhileAppending(vector, 129), (Sizes{4, 8, 16, 32, 64, 128, 256}));
}

TEST(OmVector, GrowsOnlyWhenTheStorageIsFull) {
    OmVector<int> vector = Counting(4);
    EXPECT_EQ(vector.capacity(), 4U);
    int const* const before = vector.data();
    vector.push_back(4);
    EXPECT_EQ(vector.capacity(), 8U);
    EXPECT_NE(vector.data(), before);
}

// Doubling the capacity, the usual rule, would give 10, 6 and 200 here.
TEST(OmVector, GrowthAfterAnOddReservationReturnsToPowersOfTwo) {
    for (auto const& [reserved, grown] : std::vector<std::pair<int, std::size_t>>{
             {1, 4}, {2, 4}, {3, 4}, {4, 8}, {5, 8}, {7, 8}, {8, 16}, {9, 16}, {100, 128}, {128, 256}}) {
        OmVector<int> vector;
        vector.reserve(static_cast<std::size_t>(reserved));
        CapacitiesWhileAppending(vector, reserved);
        ASSERT_EQ(vector.capacity(), static_cast<std::size_t>(reserved));
        vector.push_back(0);
        EXPECT_EQ(vector.capacity(), grown) << "reserved " << reserved;
    }
}

TEST(OmVector, InsertionGrowsByTheSameRule) {
    OmVector<int> vector = Counting(4);
    vector.insert(0, 9);
    EXPECT_EQ(vector.capacity(), 8U);
}

TEST(OmVector, ReserveTakesExactlyWhatIsAsked) {
    OmVector<int> vector;
    for (std::size_t const count : {1U, 5U, 6U, 17U, 1000U}) {
        vector.reserve(count);
        EXPECT_EQ(vector.capacity(), count);
    }
}

// Large blocks are counted to the byte by their arena.
TEST(OmVector, StorageIsElementCountTimesElementSize) {
    OmMemoryRegion region(false);
    OmVector<std::pair<double, double>> vector(&region);
    vector.reserve(1001);
    EXPECT_EQ(region.LiveBytes(), 1001 * sizeof(std::pair<double, double>));
    EXPECT_EQ(region.LiveBlocks(), 1U);
}

TEST(OmVector, ReserveDoesNothingWhenTheCapacityIsEnough) {
    OmVector<int> vector = Counting(5);
    int const* const before = vector.data();
    for (std::size_t const count : {0U, 1U, 5U, 8U}) {
        vector.reserve(count);
        EXPECT_EQ(vector.data(), before);
        EXPECT_EQ(vector.capacity(), 8U);
    }
}

TEST(OmVector, OldBlockGoesBackWhenTheStorageMoves) {
    OmMemoryRegion region(false);
    OmVector<int> vector(&region);
    for (int k = 0; k < 1000; ++k) {
        vector.push_back(k);
        ASSERT_EQ(region.LiveBlocks(), 1U);
    }
    vector.reserve(5000);
    EXPECT_EQ(region.LiveBlocks(), 1U);
}

TEST(OmVector, ArenaHoldsNothingAfterDestruction) {
    OmMemoryRegion region(false);
    {
        OmVector<int> const small = Counting(3, &region);
        OmVector<int> const large = Counting(3000, &region);
        OmVector<int> const copy(large, &region);
        EXPECT_EQ(region.LiveBlocks(), 3U);
    }
    EXPECT_EQ(region.LiveBlocks(), 0U);
    EXPECT_EQ(region.LiveBytes(), 0U);
}

TEST(OmVector, RoomThatNoRegionCanGiveThrowsAndChangesNothing) {
    OmVector<int> vector = Counting(3);
    EXPECT_THROW(vector.reserve(std::numeric_limits<std::size_t>::max()), std::bad_alloc);
    EXPECT_THROW(vector.reserve(std::numeric_limits<std::size_t>::max() / sizeof(int)), std::bad_alloc);
    EXPECT_EQ(Elements(vector), (Ints{0, 1, 2}));
    EXPECT_EQ(vector.capacity(), 4U);
}

// --- relocation ------------------------------------------------------------------------------------------------------

TEST(OmVector, RelocationRunsNoCopyConstructor) {
    InstanceBooks books;
    OmVector<Tracked> vector;
    Fill(vector, books, 4);
    vector.reserve(100);
    EXPECT_EQ(Values(vector), (Ints{0, 1, 2, 3}));
    EXPECT_EQ(books.copies + books.moves, 0);
    EXPECT_TRUE(books.destroyed.empty());
}

TEST(OmVector, GrowingAppendMakesOneElementAndRelocatesTheOthers) {
    InstanceBooks books;
    OmVector<Tracked> vector;
    Fill(vector, books, 4);
    vector.emplace_back(books, 4);
    EXPECT_EQ(vector.capacity(), 8U);
    EXPECT_EQ(books.made, 1);
    EXPECT_EQ(books.copies + books.moves, 0);
    EXPECT_TRUE(books.destroyed.empty());
}

TEST(OmVector, InsertionCopiesTheNewElementAlone) {
    InstanceBooks books;
    OmVector<Tracked> vector;
    Fill(vector, books, 6);
    Tracked const fresh(books, 9);
    vector.insert(2, fresh);
    EXPECT_EQ(Values(vector), (Ints{0, 1, 9, 2, 3, 4, 5}));
    EXPECT_EQ(books.copied, (Ints{9}));
    EXPECT_EQ(books.moves, 0);
    EXPECT_TRUE(books.destroyed.empty());
}

TEST(OmVector, ElementRelocatedInKeepsItsIdentity) {
    InstanceBooks books;
    {
        OmVector<Tracked> vector;
        Fill(vector, books, 4);
        alignas(Tracked) unsigned char storage[sizeof(Tracked)];
        Tracked* const loose = ::new (static_cast<void*>(storage)) Tracked(books, 9);
        vector.RelocateIn(1, loose);
        EXPECT_EQ(Values(vector), (Ints{0, 9, 1, 2, 3}));
        EXPECT_EQ(vector.capacity(), 8U);
        EXPECT_EQ(books.copies + books.moves, 0);
        EXPECT_EQ(books.Alive(), 5U);
    }
    EXPECT_TRUE(books.Balanced());
}

TEST(OmVector, ElementOfTheVectorItselfMayBeAppended) {
    OmVector<std::pair<int, std::string*>> vector;
    std::string text = "kept";
    vector.push_back({1, &text});
    for (int k = 0; k < 20; ++k) {
        vector.push_back(vector[0]);
    }
    EXPECT_EQ(vector.back().first, 1);
    EXPECT_EQ(vector.back().second, &text);
}

TEST(OmVector, ElementOfTheVectorItselfMayBeInserted) {
    for (int const count : {4, 5}) { // with and without a new block
        OmVector<int> vector = Counting(count);
        vector.insert(1, vector[3]);
        EXPECT_EQ(vector[1], 3);
        vector.insert(0, vector.back());
        EXPECT_EQ(vector[0], count - 1);
    }
}

TEST(OmVector, InsertsAtEveryPosition) {
    for (std::size_t position = 0; position <= 3; ++position) {
        OmVector<int> vector = Counting(3);
        vector.insert(position, 9);
        Ints expected{0, 1, 2};
        expected.insert(expected.begin() + static_cast<std::ptrdiff_t>(position), 9);
        EXPECT_EQ(Elements(vector), expected);
    }
}

// --- erasure ---------------------------------------------------------------------------------------------------------

TEST(OmVector, EraseDestroysOneElementAndMovesTheLaterOnesAsTheyStand) {
    InstanceBooks books;
    OmVector<Tracked> vector;
    Fill(vector, books, 5);
    vector.erase(1);
    EXPECT_EQ(Values(vector), (Ints{0, 2, 3, 4}));
    EXPECT_EQ(books.destroyed, (Ints{1}));
    EXPECT_EQ(books.copies + books.moves, 0);
    EXPECT_EQ(vector.capacity(), 8U);
}

TEST(OmVector, EraseOfTheFirstAndOfTheLast) {
    OmVector<int> vector = Counting(4);
    int const* const block = vector.data();
    vector.erase(0);
    EXPECT_EQ(Elements(vector), (Ints{1, 2, 3}));
    vector.erase(2);
    EXPECT_EQ(Elements(vector), (Ints{1, 2}));
    EXPECT_EQ(vector.data(), block);
    vector.erase(0);
    vector.erase(0);
    EXPECT_TRUE(vector.empty());
    EXPECT_EQ(vector.capacity(), 4U);
}

TEST(OmVector, ClearDestroysFirstToLastAndKeepsTheStorage) {
    InstanceBooks books;
    OmVector<Tracked> vector;
    Fill(vector, books, 3);
    vector.clear();
    EXPECT_EQ(books.destroyed, (Ints{0, 1, 2}));
    EXPECT_EQ(vector.capacity(), 4U);
    EXPECT_TRUE(vector.empty());
}

TEST(OmVector, DestructorDestroysFirstToLast) {
    InstanceBooks books;
    {
        OmVector<Tracked> vector;
        Fill(vector, books, 3);
    }
    EXPECT_EQ(books.destroyed, (Ints{0, 1, 2}));
    EXPECT_TRUE(books.Balanced());
}

// --- copies ----------------------------------------------------------------------------------------------------------

// A copy that grows by the usual rule would have capacity 8.
TEST(OmVector, CopyReservesExactlyTheElementCount) {
    OmVector<int> const source = Counting(5);
    EXPECT_EQ(OmVector<int>(source, nullptr).capacity(), 5U);
    EXPECT_EQ(OmVector<int>(source).capacity(), 5U);
    EXPECT_EQ(Elements(OmVector<int>(source)), (Ints{0, 1, 2, 3, 4}));
}

TEST(OmVector, CopyGoesIntoTheGivenRegion) {
    OmMemoryRegion home(false);
    OmMemoryRegion other(false);
    OmVector<int> const source = Counting(5, &home);
    OmVector<int> const same = source;
    OmVector<int> const moved(source, &other);
    EXPECT_EQ(same.Region(), &home);
    EXPECT_EQ(moved.Region(), &other);
    EXPECT_EQ(home.LiveBlocks(), 2U);
    EXPECT_EQ(other.LiveBlocks(), 1U);
    EXPECT_EQ(moved, source);
}

TEST(OmVector, CopyAppendsTheElementsOneByOneInOrder) {
    InstanceBooks books;
    OmVector<Tracked> source;
    Fill(source, books, 5);
    OmVector<Tracked> const copy(source, nullptr);
    EXPECT_EQ(books.copied, (Ints{0, 1, 2, 3, 4}));
    EXPECT_EQ(books.moves, 0);
}

TEST(OmVector, AssignmentFreesItsStorageAndReservesTheSourcesCount) {
    OmVector<int> target = Counting(100);
    target = Counting(5);
    EXPECT_EQ(Elements(target), (Ints{0, 1, 2, 3, 4}));
    EXPECT_EQ(target.capacity(), 5U);
    target = OmVector<int>();
    EXPECT_EQ(target.data(), nullptr);
    EXPECT_EQ(target.capacity(), 0U);
}

// Copy-and-swap, the usual way, would copy first and destroy afterwards.
TEST(OmVector, AssignmentDestroysTheOldElementsBeforeItCopies) {
    InstanceBooks books;
    OmVector<Tracked> source;
    OmVector<Tracked> target;
    Fill(source, books, 2);
    Fill(target, books, 3);
    books.copiesUntilFailure = 0;
    EXPECT_THROW(target = source, CopyFailed);
    EXPECT_EQ(books.destroyed, (Ints{0, 1, 2}));
    EXPECT_TRUE(target.empty());
}

TEST(OmVector, AssignmentKeepsTheTargetsRegion) {
    OmMemoryRegion home(false);
    OmMemoryRegion other(false);
    OmVector<int> const source = Counting(5, &home);
    OmVector<int> target(&other);
    target = source;
    EXPECT_EQ(target.Region(), &other);
    EXPECT_EQ(other.LiveBlocks(), 1U);
    EXPECT_EQ(target, source);
}

TEST(OmVector, AssignmentToItselfChangesNothing) {
    InstanceBooks books;
    OmVector<Tracked> vector;
    Fill(vector, books, 3);
    OmVector<Tracked> const& same = vector;
    vector = same;
    EXPECT_EQ(Values(vector), (Ints{0, 1, 2}));
    EXPECT_EQ(books.copies, 0);
    EXPECT_TRUE(books.destroyed.empty());
}

TEST(OmVector, MoveTakesStorageAndRegion) {
    OmMemoryRegion region(false);
    OmVector<int> source = Counting(5, &region);
    int const* const block = source.data();
    OmVector<int> target = std::move(source);
    EXPECT_EQ(target.data(), block);
    EXPECT_EQ(target.Region(), &region);
    EXPECT_EQ(Elements(target), (Ints{0, 1, 2, 3, 4}));
    EXPECT_EQ(region.LiveBlocks(), 1U);
}

TEST(OmVector, MovedFromVectorIsEmptyAndUsableInItsRegion) {
    OmMemoryRegion region(false);
    OmVector<int> source = Counting(5, &region);
    OmVector<int> const target = std::move(source);
    source = Counting(2);
    EXPECT_EQ(Elements(source), (Ints{0, 1}));
    EXPECT_EQ(source.Region(), &region);
    EXPECT_EQ(region.LiveBlocks(), 2U);
    EXPECT_EQ(target.size(), 5U);
}

TEST(OmVector, SwapExchangesStorageAndRegion) {
    OmMemoryRegion region(false);
    OmVector<int> a = Counting(2, &region);
    OmVector<int> b = Counting(3);
    a.swap(b);
    EXPECT_EQ(Elements(a), (Ints{0, 1, 2}));
    EXPECT_EQ(a.Region(), OmMemoryRegion::DefaultHeap());
    EXPECT_EQ(Elements(b), (Ints{0, 1}));
    EXPECT_EQ(b.Region(), &region);
}

TEST(OmVector, EqualWhenTheElementsAre) {
    OmMemoryRegion region(false);
    OmVector<int> other = Counting(3, &region);
    EXPECT_EQ(Counting(3), other);
    EXPECT_NE(Counting(2), other);
    other[1] = 7;
    EXPECT_NE(Counting(3), other);
}

// --- elements whose copies fail --------------------------------------------------------------------------------------

TEST(OmVector, CopyThatFailsHalfWayLeavesNothingBehind) {
    InstanceBooks books;
    OmMemoryRegion region(false);
    {
        OmVector<Tracked> source;
        Fill(source, books, 6);
        for (int failing = 0; failing < 6; ++failing) {
            books.copiesUntilFailure = failing;
            EXPECT_THROW(OmVector<Tracked>(source, &region), CopyFailed);
            EXPECT_EQ(books.Alive(), 6U);
            EXPECT_EQ(region.LiveBlocks(), 0U);
        }
    }
    EXPECT_TRUE(books.Balanced());
}

TEST(OmVector, AssignmentThatFailsHalfWayLeavesTheTargetEmpty) {
    InstanceBooks books;
    OmMemoryRegion region(false);
    {
        OmVector<Tracked> source;
        OmVector<Tracked> target(&region);
        Fill(source, books, 6);
        Fill(target, books, 3);
        books.copiesUntilFailure = 4;
        EXPECT_THROW(target = source, CopyFailed);
        EXPECT_TRUE(target.empty());
        EXPECT_EQ(region.LiveBlocks(), 0U);
        EXPECT_EQ(books.Alive(), 6U);
    }
    EXPECT_TRUE(books.Balanced());
}

TEST(OmVector, AppendOrInsertionThatFailsChangesNothing) {
    for (int const count : {3, 4}) { // without and with a new block
        InstanceBooks books;
        OmMemoryRegion region(false);
        {
            OmVector<Tracked> vector(&region);
            Fill(vector, books, count);
            Ints const before = Values(vector);
            Tracked const fresh(books, 9);
            books.copiesUntilFailure = 0;
            EXPECT_THROW(vector.push_back(fresh), CopyFailed);
            EXPECT_THROW(vector.insert(1, fresh), CopyFailed);
            EXPECT_EQ(Values(vector), before);
            EXPECT_EQ(vector.capacity(), 4U);
            EXPECT_EQ(region.LiveBlocks(), 1U);
        }
        EXPECT_TRUE(books.Balanced());
        EXPECT_EQ(region.LiveBlocks(), 0U);
    }
}

// --- against the standard vector -------------------------------------------------------------------------------------

TEST(OmVector, RandomInsertionsAndErasuresAgreeWithTheStandardVector) {
    for (std::uint64_t seed = 1; seed <= 50; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937_64 random(seed);
        OmMemoryRegion region(false);
        OmVector<int> vector(&region);
        Ints model;
        for (int step = 0; step < 200; ++step) {
            int const fresh = static_cast<int>(random() % 1000);
            std::size_t const place = static_cast<std::size_t>(random() % (model.size() + 1));
            if (random() % 3 != 0 || place == model.size()) {
                vector.insert(place, fresh);
                model.insert(model.begin() + static_cast<std::ptrdiff_t>(place), fresh);
            } else {
                vector.erase(place);
                model.erase(model.begin() + static_cast<std::ptrdiff_t>(place));
            }
            ASSERT_EQ(Elements(vector), model);
        }
        EXPECT_EQ(OmVector<int>(vector).capacity(), model.size());
    }
}
