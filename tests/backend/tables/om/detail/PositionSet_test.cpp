// Positions along an axis, collected as a list and as a bitmap.
#include "backend/tables/om/detail/PositionSet.h"

#include "tests/support/SeededScripts.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <set>

namespace {

using om_detail::PositionSet;
using Positions = PositionSet::Positions;

constexpr std::uint64_t Most = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint64_t AsList = 0;
constexpr std::uint64_t AsBitmap = Most;

Positions Collected(std::uint64_t count, std::uint64_t spread, Positions const& added) {
    PositionSet set(count, spread);
    for (unsigned long long const position : added) {
        set.Add(position);
    }
    return set.Take();
}

} // namespace

TEST(PositionSet, NothingCollectedGivesNothing) {
    EXPECT_TRUE(Collected(0, AsBitmap, {}).empty());
    EXPECT_TRUE(Collected(1000, AsBitmap, {}).empty());
    EXPECT_TRUE(Collected(1000, AsList, {}).empty());
}

TEST(PositionSet, BothWaysGiveEachPositionOnceAndAscending) {
    Positions const added{130, 0, 64, 63, 130, 199, 64, 0, 127, 128};
    Positions const expected{0, 63, 64, 127, 128, 130, 199};
    EXPECT_EQ(Collected(200, AsList, added), expected);
    EXPECT_EQ(Collected(200, AsBitmap, added), expected);
}

// The last word of the bitmap is there whether or not the axis ends with a word.
TEST(PositionSet, LastPositionOfTheAxisIsMarked) {
    for (std::uint64_t const count : {1U, 63U, 64U, 65U, 128U}) {
        EXPECT_EQ(Collected(count, AsBitmap, {count - 1}), Positions{count - 1}) << count;
    }
}

// What the list holds already must not be lost when the bitmap takes over in the middle.
TEST(PositionSet, BitmapTakesTheListOver) {
    Positions added;
    for (unsigned long long k = 0; k < 100; ++k) {
        added.push_back(990 - 10 * k);
        std::set<unsigned long long> const sorted(added.begin(), added.end());
        EXPECT_EQ(Collected(1000, 20, added), Positions(sorted.begin(), sorted.end())) << k;
    }
}

// A bitmap of this axis would take two million terabytes.
TEST(PositionSet, EndlessAxisIsNeverMapped) {
    EXPECT_EQ(Collected(Most, PositionSet::Spread, {Most - 1, 5, Most, 5}), (Positions{5, Most - 1, Most}));
}

// A long list is sorted digit by digit, up to the last bit of a position.
TEST(PositionSet, LongListIsSortedByAllItsBits) {
    omtest::Dice dice(7);
    Positions added;
    std::set<unsigned long long> expected;
    for (unsigned int bits = 0; bits < 64; ++bits) {
        for (unsigned int k = 0; k < 100; ++k) {
            added.push_back((1ULL << bits) + dice.Below(std::size_t{1} << (bits / 2)));
            expected.insert(added.back());
        }
    }
    EXPECT_EQ(Collected(Most, PositionSet::Spread, added), Positions(expected.begin(), expected.end()));
}

TEST(PositionSet, RandomPositionsAgreeWithAnOrderedSet) {
    omtest::RunScripts(300, [](omtest::Dice& dice) {
        std::uint64_t const count = 1 + dice.Below(dice.Percent(50) ? 300 : 100000);
        std::set<unsigned long long> expected;
        Positions added;
        for (std::size_t k = dice.Below(dice.Percent(70) ? 2000 : 9000); k > 0; --k) {
            added.push_back(dice.Below(static_cast<std::size_t>(count)));
            expected.insert(added.back());
        }
        for (std::uint64_t const spread : {AsList, AsBitmap, PositionSet::Spread, std::uint64_t{2}}) {
            EXPECT_EQ(Collected(count, spread, added), Positions(expected.begin(), expected.end())) << spread;
        }
    });
}
