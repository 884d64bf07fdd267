#include "backend/tables/PuppetVector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <limits>
#include <numeric>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using Shorts = PuppetVector<short>;

std::vector<short> Elements(Shorts const& vector) { return std::vector<short>(vector.begin(), vector.end()); }

using Expected = std::vector<short>;

} // namespace

TEST(PuppetVector, WritingPastTheEndGrowsToThePosition) {
    Shorts axis(-1);
    axis[0] = 4;
    EXPECT_EQ(Elements(axis), (Expected{4}));
    axis[1] = 5;
    EXPECT_EQ(Elements(axis), (Expected{4, 5}));
}

// resize() of a plain vector would fill with 0, which names a dimension.
TEST(PuppetVector, GapIsFilledWithTheFillValue) {
    Shorts axis(-1);
    axis[3] = 7;
    EXPECT_EQ(Elements(axis), (Expected{-1, -1, -1, 7}));
    axis[5] = 8;
    EXPECT_EQ(Elements(axis), (Expected{-1, -1, -1, 7, -1, 8}));
}

TEST(PuppetVector, ReadingPastTheEndOfAModifiableVectorGrowsToo) {
    Shorts axis(-1);
    EXPECT_EQ(axis[2], -1);
    EXPECT_EQ(axis.size(), 3U);
}

TEST(PuppetVector, PositionInsideKeepsTheLength) {
    Shorts axis({1, 2, 3}, -1);
    axis[1] = 9;
    EXPECT_EQ(Elements(axis), (Expected{1, 9, 3}));
}

TEST(PuppetVector, ReadingPastTheEndOfAConstVectorGivesTheFillValueAndDoesNotGrow) {
    Shorts const axis({4, 5}, -1);
    EXPECT_EQ(axis[1], 5);
    EXPECT_EQ(axis[2], -1);
    EXPECT_EQ(axis[1000000], -1);
    EXPECT_EQ(axis[std::numeric_limits<std::size_t>::max()], -1);
    EXPECT_EQ(axis.size(), 2U);
}

TEST(PuppetVector, FillValueIsTheDefaultValueUnlessGiven) {
    PuppetVector<int> numbers;
    PuppetVector<std::string> strings;
    EXPECT_EQ(numbers.Fill(), 0);
    EXPECT_EQ(strings[2], "");
    EXPECT_EQ(PuppetVector<std::string>(std::string("none"))[4], "none");
}

TEST(PuppetVector, PositionAtMaxSizeThrowsAndChangesNothing) {
    Shorts axis({4}, -1);
    EXPECT_THROW(axis[axis.max_size()], std::length_error);
    EXPECT_THROW(axis[std::numeric_limits<std::size_t>::max()], std::length_error);
    EXPECT_EQ(Elements(axis), (Expected{4}));
}

TEST(PuppetVector, AtNeverGrows) {
    Shorts axis({4}, -1);
    Shorts const& readOnly = axis;
    EXPECT_EQ(axis.at(0), 4);
    EXPECT_THROW(axis.at(1), std::out_of_range);
    EXPECT_THROW(readOnly.at(1), std::out_of_range);
    EXPECT_EQ(axis.size(), 1U);
}

TEST(PuppetVector, ResizeWithoutAValueFillsWithTheFillValue) {
    Shorts axis({4}, -1);
    axis.resize(3);
    EXPECT_EQ(Elements(axis), (Expected{4, -1, -1}));
    axis.resize(5, 6);
    EXPECT_EQ(Elements(axis), (Expected{4, -1, -1, 6, 6}));
    axis.resize(1);
    EXPECT_EQ(Elements(axis), (Expected{4}));
}

TEST(PuppetVector, ElementThatWasErasedReadsAsTheFillValue) {
    Shorts axis({4, 5}, -1);
    axis.pop_back();
    EXPECT_EQ(std::as_const(axis)[1], -1);
    axis.clear();
    EXPECT_EQ(std::as_const(axis)[0], -1);
    EXPECT_TRUE(axis.empty());
}

TEST(PuppetVector, FillValueInsideTheVectorMayBePulledPastItsEnd) {
    PuppetVector<std::string> strings(std::string("a fill value that does not fit a small buffer"));
    for (std::size_t position = 0; position < 100; position += 3) {
        strings[position] += "!";
    }
    EXPECT_EQ(strings[98], strings.Fill());
    EXPECT_EQ(strings[99], strings.Fill() + "!");
}

TEST(PuppetVector, ConstructsFromListCountAndRange) {
    std::vector<short> const source{4, 5, 6};
    EXPECT_EQ(Elements(Shorts({4, 5}, -1)), (Expected{4, 5}));
    EXPECT_EQ(Elements(Shorts(3, 5, -1)), (Expected{5, 5, 5}));
    EXPECT_EQ(Elements(Shorts(source.begin() + 1, source.end(), -1)), (Expected{5, 6}));
    std::istringstream stream("7 8");
    EXPECT_EQ(Elements(Shorts(std::istream_iterator<short>(stream), std::istream_iterator<short>(), -1)),
              (Expected{7, 8}));
    EXPECT_EQ(std::as_const(source)[0], 4);
}

TEST(PuppetVector, CopyAndAssignmentTakeTheFillValueAlong) {
    Shorts const source({4, 5}, -1);
    Shorts const copy = source;
    Shorts assigned(-7);
    assigned = source;
    EXPECT_EQ(copy, source);
    EXPECT_EQ(copy.Fill(), -1);
    EXPECT_EQ(assigned, source);
    EXPECT_EQ(assigned[3], -1);
}

TEST(PuppetVector, AssignmentOfElementsKeepsTheFillValue) {
    Shorts axis(-1);
    axis = {1, 2};
    EXPECT_EQ(Elements(axis), (Expected{1, 2}));
    axis.assign(2, 9);
    EXPECT_EQ(Elements(axis), (Expected{9, 9}));
    axis.assign({3});
    EXPECT_EQ(Elements(axis), (Expected{3}));
    std::vector<short> const source{4, 5};
    axis.assign(source.begin(), source.end());
    EXPECT_EQ(Elements(axis), (Expected{4, 5}));
    EXPECT_EQ(axis.Fill(), -1);
}

TEST(PuppetVector, MoveTakesElementsAndFillValue) {
    Shorts source({4, 5}, -1);
    short const* const block = source.data();
    Shorts const moved = std::move(source);
    EXPECT_EQ(moved.data(), block);
    EXPECT_EQ(Elements(moved), (Expected{4, 5}));
    EXPECT_EQ(moved.Fill(), -1);
}

TEST(PuppetVector, SwapExchangesElementsAndFillValues) {
    Shorts a({1, 2}, -1);
    Shorts b({3}, -2);
    a.swap(b);
    EXPECT_EQ(Elements(a), (Expected{3}));
    EXPECT_EQ(a.Fill(), -2);
    swap(a, b);
    EXPECT_EQ(Elements(a), (Expected{1, 2}));
    EXPECT_EQ(a.Fill(), -1);
}

TEST(PuppetVector, InsertsErasesAndPushesLikeASequence) {
    Shorts axis(-1);
    axis.push_back(1);
    EXPECT_EQ(axis.emplace_back(static_cast<short>(4)), 4);
    EXPECT_EQ(*axis.insert(axis.begin() + 1, 3), 3);
    axis.insert(axis.begin() + 1, {2, 2});
    EXPECT_EQ(Elements(axis), (Expected{1, 2, 2, 3, 4}));
    axis.insert(axis.end(), 2, 5);
    axis.emplace(axis.begin(), static_cast<short>(0));
    EXPECT_EQ(Elements(axis), (Expected{0, 1, 2, 2, 3, 4, 5, 5}));
    EXPECT_EQ(*axis.erase(axis.begin() + 2), 2);
    EXPECT_EQ(*axis.erase(axis.begin(), axis.begin() + 2), 2);
    std::vector<short> const more{8, 9};
    axis.insert(axis.begin(), more.begin(), more.end());
    EXPECT_EQ(Elements(axis), (Expected{8, 9, 2, 3, 4, 5, 5}));
    EXPECT_EQ(axis.front(), 8);
    EXPECT_EQ(axis.back(), 5);
    EXPECT_EQ(axis.data()[1], 9);
}

TEST(PuppetVector, CountAndValueOfOneIntegerTypeAreNoRange) {
    PuppetVector<int> numbers(3, 5, -1);
    EXPECT_EQ(numbers, PuppetVector<int>({5, 5, 5}, 0));
    numbers.assign(2, 7);
    numbers.insert(numbers.begin(), 1, 6);
    EXPECT_EQ(numbers, PuppetVector<int>({6, 7, 7}, 0));
}

TEST(PuppetVector, WorksWithStandardAlgorithms) {
    Shorts axis({3, 1, 2}, -1);
    std::sort(axis.begin(), axis.end());
    EXPECT_EQ(std::accumulate(axis.cbegin(), axis.cend(), 0), 6);
    EXPECT_EQ((Expected(axis.rbegin(), axis.rend())), (Expected{3, 2, 1}));
    EXPECT_EQ((Expected(axis.crbegin(), axis.crend())), (Expected{3, 2, 1}));
    std::copy(axis.begin(), axis.begin() + 1, std::back_inserter(axis));
    EXPECT_EQ(Elements(axis), (Expected{1, 2, 3, 1}));
    static_assert(std::is_same_v<Shorts::value_type, short>);
}

TEST(PuppetVector, ReserveGivesRoomAndNoElements) {
    Shorts axis(-1);
    axis.reserve(10);
    EXPECT_GE(axis.capacity(), 10U);
    EXPECT_TRUE(axis.empty());
    short const* const before = axis.data();
    axis[9] = 1;
    EXPECT_EQ(axis.data(), before);
    axis.resize(1);
    axis.shrink_to_fit();
    EXPECT_EQ(Elements(axis), (Expected{-1}));
}

TEST(PuppetVector, ComparesElementsAloneInLexicographicOrder) {
    Shorts const a({1, 2}, -1);
    Shorts const b({1, 3}, -1);
    EXPECT_EQ(a, Shorts({1, 2}, 0));
    EXPECT_NE(a, b);
    EXPECT_LT(a, b);
    EXPECT_LE(a, a);
    EXPECT_GT(b, a);
    EXPECT_GE(b, b);
    EXPECT_LT(Shorts({1}, 9), a);
}
