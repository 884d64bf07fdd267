#include "backend/tables/MultiBase.h"
#include "tests/support/AssertionCatcher.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>
#include <list>
#include <string>
#include <vector>

namespace {

using omtest::AfterReport;
using omtest::AssertionCatcher;
using omtest::FailedAssertion;
using Digits = std::vector<std::uint32_t>;
using Reports = std::vector<std::string>;

MultiBase Of(Digits const& bases) { return MultiBase(bases.begin(), bases.end()); }

Reports const ZeroBase{"backend/tables/MultiBase:126: b>0"};
Reports const WrongLength{"backend/tables/MultiBase:148: digit == end && i == size"};

} // namespace

TEST(MultiBase, ThreeByFour) {
    MultiBase const index = Of({3, 4});
    EXPECT_EQ(index.Count(), 12U);
    EXPECT_EQ(index.Digits(7), (Digits{1, 3}));
    EXPECT_EQ(index.Number({2, 1}), 9U);
}

TEST(MultiBase, DigitsOfZeroAreAllZerosForAnyBases) {
    AssertionCatcher caught(AfterReport::Return);
    EXPECT_EQ(Of({3, 4}).Digits(0), (Digits{0, 0}));
    EXPECT_EQ(Of({0, 5}).Digits(0), (Digits{0, 0}));
    EXPECT_EQ(Of({4, 0, 0}).Digits(0), (Digits{0, 0, 0}));
    EXPECT_EQ(Of({0}).Digits(0), (Digits{0}));
    EXPECT_TRUE(caught.Failures().empty());
}

// The usual loop divides by every base, and so would stop at the first one here.
TEST(MultiBase, ZeroBaseAtPositionZeroIsNeverConsultedByDigits) {
    AssertionCatcher caught(AfterReport::Return);
    EXPECT_EQ(Of({0, 5}).Digits(7), (Digits{1, 2}));
    EXPECT_EQ(Of({0}).Digits(9), (Digits{9}));
    EXPECT_TRUE(caught.Failures().empty());
}

// The usual scheme multiplies digit 0 by base 0, or checks it against it.
TEST(MultiBase, BaseZeroIsLeftOutOfNumber) {
    AssertionCatcher caught(AfterReport::Return);
    EXPECT_EQ(Of({0, 5}).Number({1, 2}), 7U);
    EXPECT_EQ(Of({2, 5}).Number({9, 2}), 47U);
    EXPECT_EQ(Of({0}).Number({9}), 9U);
    EXPECT_TRUE(caught.Failures().empty());
}

TEST(MultiBase, NumberPastCountLeavesAnOversizedFirstDigit) {
    EXPECT_EQ(Of({2, 3}).Digits(6), (Digits{2, 0}));
    EXPECT_EQ(Of({2, 3}).Digits(101), (Digits{33, 2}));
    EXPECT_EQ(Of({2, 3}).Number({33, 2}), 101U);
    EXPECT_EQ(Of({5}).Digits(77), (Digits{77}));
}

TEST(MultiBase, WithoutBasesThereIsOnePositionWithoutDigits) {
    MultiBase const index;
    EXPECT_EQ(index.Count(), 1U);
    EXPECT_EQ(index.Digits(0), Digits{});
    EXPECT_EQ(index.Digits(12), Digits{});
}

TEST(MultiBase, EmptyDigitListWithoutBasesIsNumberZero) {
    AssertionCatcher caught(AfterReport::Return);
    EXPECT_EQ(MultiBase().Number({}), 0U);
    EXPECT_TRUE(caught.Failures().empty());
}

TEST(MultiBase, ZeroBaseBehindPositionZeroFailsForANumberAboveZero) {
    for (Digits const& bases : {Digits{2, 0}, Digits{2, 0, 3}, Digits{0, 0}, Digits{2, 3, 0}}) {
        AssertionCatcher caught(AfterReport::Throw);
        EXPECT_THROW(Of(bases).Digits(50), FailedAssertion);
        EXPECT_EQ(caught.Reports(), ZeroBase);
    }
}

// Stopping early, a number used up by the digits behind it never reaches the zero base.
TEST(MultiBase, DigitsStopEarlyOnceNothingIsLeft) {
    AssertionCatcher caught(AfterReport::Throw);
    EXPECT_EQ(Of({2, 0, 5}).Digits(4), (Digits{0, 0, 4}));
    EXPECT_TRUE(caught.Failures().empty());
    EXPECT_THROW(Of({2, 0, 5}).Digits(5), FailedAssertion);
    EXPECT_EQ(caught.Reports(), ZeroBase);
}

TEST(MultiBaseDeathTest, ZeroBasePastTheAssertionEndsTheProcess) {
    AssertionCatcher caught(AfterReport::Return);
    EXPECT_EXIT(Of({2, 0}).Digits(1), ::testing::KilledBySignal(SIGABRT), "");
}

TEST(MultiBaseDeathTest, ZeroBaseReportsSourceLineAndCondition) {
    EXPECT_EXIT(Of({2, 0}).Digits(1), ::testing::KilledBySignal(SIGABRT), "backend/tables/MultiBase:126: b>0\n");
}

TEST(MultiBase, LongerDigitListFailsAndStillGivesTheNumberSoFar) {
    AssertionCatcher caught(AfterReport::Return);
    EXPECT_EQ(Of({3, 4}).Number({2, 1, 9}), 9U);
    EXPECT_EQ(caught.Reports(), WrongLength);
}

TEST(MultiBase, ShorterDigitListFailsAndStillGivesTheNumberSoFar) {
    AssertionCatcher caught(AfterReport::Return);
    EXPECT_EQ(Of({3, 4, 5}).Number({2, 1}), 9U);
    EXPECT_EQ(Of({3, 4, 5}).Number({2}), 2U);
    EXPECT_EQ(caught.Reports(), (Reports{WrongLength[0], WrongLength[0]}));
}

// There is no digit to start from.
TEST(MultiBase, EmptyDigitListFailsWhereThereAreBases) {
    AssertionCatcher caught(AfterReport::Return);
    EXPECT_EQ(Of({3, 4}).Number({}), 0U);
    EXPECT_EQ(caught.Reports(), WrongLength);
}

TEST(MultiBase, DigitWithoutAnyBaseFailsAndIsTheNumber) {
    AssertionCatcher caught(AfterReport::Return);
    EXPECT_EQ(MultiBase().Number({6}), 6U);
    EXPECT_EQ(caught.Reports(), WrongLength);
}

TEST(MultiBase, WrongLengthThrowsOutOfNumberWithAThrowingHandler) {
    AssertionCatcher caught(AfterReport::Throw);
    EXPECT_THROW(Of({3, 4}).Number({2}), FailedAssertion);
    EXPECT_EQ(caught.Reports(), WrongLength);
}

TEST(MultiBaseDeathTest, WrongLengthReportsSourceLineAndCondition) {
    EXPECT_EXIT(Of({3, 4}).Number({2}), ::testing::KilledBySignal(SIGABRT),
                "backend/tables/MultiBase:148: digit == end && i == size\n");
}

TEST(MultiBase, CountMultipliesInSixtyFourBits) {
    EXPECT_EQ(Of({100000, 100000}).Count(), 10000000000U);
    EXPECT_EQ(Of({4294967295U, 4294967295U}).Count(), 18446744065119617025U);
    EXPECT_EQ(Of({65536, 65536, 65536, 65536}).Count(), 0U);
}

TEST(MultiBase, CountUsesEveryBaseTheFirstIncluded) {
    EXPECT_EQ(Of({0, 5}).Count(), 0U);
    EXPECT_EQ(Of({5, 0}).Count(), 0U);
    EXPECT_EQ(Of({7}).Count(), 7U);
}

TEST(MultiBase, LargeNumbersGoBothWaysInSixtyFourBits) {
    MultiBase const index = Of({2000000, 3000000, 1000000});
    Digits const digits{1999999, 2999999, 999999};
    EXPECT_EQ(index.Number(digits), index.Count() - 1);
    EXPECT_EQ(index.Digits(index.Count() - 1), digits);
}

// Only 32 bits of what is left fit into a digit.
TEST(MultiBase, OversizedFirstDigitKeepsItsLowHalf) {
    EXPECT_EQ(Of({1}).Digits((std::uint64_t{1} << 32) + 5), (Digits{5}));
    EXPECT_EQ(Of({1, 2}).Digits((std::uint64_t{1} << 33) + 7), (Digits{3, 1}));
}

TEST(MultiBase, DigitsGoIntoTheCallersStorage) {
    std::uint32_t digits[3] = {9, 9, 9};
    EXPECT_EQ(Of({2, 3, 4}).Digits(7, digits), 0U);
    EXPECT_EQ(std::vector<std::uint32_t>(digits, digits + 3), (std::vector<std::uint32_t>{0, 1, 3}));
    EXPECT_EQ(Of({2, 3}).Digits(14, digits), 4U);
    EXPECT_EQ(std::vector<std::uint32_t>(digits, digits + 3), (std::vector<std::uint32_t>{4, 2, 3}));
    EXPECT_EQ(Of({}).Digits(14, nullptr), 0U);
}

// The storage cannot hold it, the caller may want to know.
TEST(MultiBase, WhatIsLeftForTheFirstDigitIsToldWhole) {
    std::uint32_t digits[2] = {};
    EXPECT_EQ(Of({1, 2}).Digits(std::uint64_t{1} << 40, digits), std::uint64_t{1} << 39);
    EXPECT_EQ(digits[0], 0U);
}

TEST(MultiBase, CopiesItsBases) {
    std::list<std::uint32_t> bases{3, 4};
    MultiBase const index(bases.begin(), bases.end());
    bases.front() = 0;
    EXPECT_EQ(index.Bases(), (Digits{3, 4}));
    EXPECT_EQ(index.Count(), 12U);
}

TEST(MultiBase, CopiesAndAssignmentsAreIndependentValues) {
    MultiBase index = Of({3, 4});
    MultiBase const copy = index;
    EXPECT_EQ(copy, index);
    index = Of({2});
    EXPECT_EQ(copy.Count(), 12U);
    EXPECT_EQ(index.Count(), 2U);
    EXPECT_NE(copy, index);
}
