#include "examples/crosstab/DecimalSum.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <limits>
#include <random>
#include <string>

namespace {

using crosstab::DecimalSum;
using Outcome = DecimalSum::Outcome;

double sumOf(std::initializer_list<char const*> numbers) {
    DecimalSum sum;
    for (char const* const number : numbers) {
        EXPECT_EQ(sum.add(number), Outcome::Added) << number;
    }
    return sum.value();
}

TEST(DecimalSum, NothingAddedIsZero) { EXPECT_EQ(DecimalSum().value(), 0.0); }

// Doubles would give 0.30000000000000004.
TEST(DecimalSum, TenthsAddUpAsOnPaper) {
    EXPECT_EQ(sumOf({"0.1", "0.2"}), 0.3);
    EXPECT_EQ(sumOf({"0.1", "0.1", "0.1", "0.1", "0.1", "0.1", "0.1", "0.1", "0.1", "0.1"}), 1.0);
}

TEST(DecimalSum, LargeTermsThatCancelLeaveTheSmallOnes) {
    EXPECT_EQ(sumOf({"1e300", "1", "-1e300", "1e-300"}), 1.0);
    EXPECT_EQ(sumOf({"1e300", "1e-300", "-1e300"}), 1e-300);
    EXPECT_EQ(sumOf({"9007199254740993", "-1"}), 9007199254740992.0);
}

TEST(DecimalSum, NegativeSumsCarryAsPositiveOnesDo) {
    EXPECT_EQ(sumOf({"-1"}), -1.0);
    EXPECT_EQ(sumOf({"-999999999", "-1"}), -1e9);
    EXPECT_EQ(sumOf({"1", "-1000000000000000000"}), -999999999999999999.0);
    EXPECT_EQ(sumOf({"0.000000001", "-1"}), -0.999999999);
    EXPECT_EQ(sumOf({"5", "-7.5"}), -2.5);
}

TEST(DecimalSum, ASumOfZeroHasNoSign) {
    EXPECT_FALSE(std::signbit(sumOf({"-0.0"})));
    EXPECT_FALSE(std::signbit(sumOf({"-3", "3"})));
    EXPECT_FALSE(std::signbit(sumOf({"-1e300", "1e300"})));
}

TEST(DecimalSum, ReadsNumbersAsTheyAreWritten) {
    EXPECT_EQ(sumOf({" 12\t"}), 12.0);
    EXPECT_EQ(sumOf({"+.5"}), 0.5);
    EXPECT_EQ(sumOf({"5."}), 5.0);
    EXPECT_EQ(sumOf({"-1.25E+2"}), -125.0);
    EXPECT_EQ(sumOf({"000012.500"}), 12.5);
    EXPECT_EQ(sumOf({"0e99999999999999999999999"}), 0.0);
    EXPECT_EQ(sumOf({"1e0000000000000000000000000001"}), 10.0);
}

TEST(DecimalSum, LeadingAndTrailingZerosDoNotCountAgainstTheRange) {
    std::string const zeros(2000, '0');
    EXPECT_EQ(sumOf({("0." + zeros + "1e2001").c_str()}), 1.0);
    EXPECT_EQ(sumOf({("1" + zeros + "e-2000").c_str()}), 1.0);
}

TEST(DecimalSum, RefusesWhatIsNoNumberAndAddsNothing) {
    DecimalSum sum;
    for (char const* const text : {"", " ", ".", "-", "+-1", "1e", "1e+", "e5", "1,5", "1 2", "0x1p3", "inf", "NaN",
                                   "1.2.3", "12a", "\n1", "--1", "infinity"}) {
        EXPECT_EQ(sum.add(text), Outcome::NotANumber) << text;
    }
    EXPECT_EQ(sum.value(), 0.0);
}

TEST(DecimalSum, RefusesWhatADoubleCannotHoldAndAddsNothing) {
    DecimalSum sum;
    for (char const* const text :
         {"1e309", "-1.8e308", "1e-324", "1e999999999999999999999", "1e-999999999999999999999"}) {
        EXPECT_EQ(sum.add(text), Outcome::OutOfRange) << text;
    }
    EXPECT_EQ(sum.value(), 0.0);
}

TEST(DecimalSum, TheEndsOfTheRangeAreInIt) {
    EXPECT_EQ(sumOf({"1.7976931348623157e308"}), std::numeric_limits<double>::max());
    EXPECT_EQ(sumOf({"4.9406564584124654e-324"}), std::numeric_limits<double>::denorm_min());
}

TEST(DecimalSum, ASumBeyondTheLargestDoubleIsInfinite) {
    EXPECT_EQ(sumOf({"1e308", "1e308"}), std::numeric_limits<double>::infinity());
    EXPECT_EQ(sumOf({"-1e308", "-1e308"}), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(sumOf({"1e308", "1e308", "-1e308"}), 1e308);
}

TEST(DecimalSum, ASumBelowTheSmallestDoubleIsZero) {
    EXPECT_EQ(sumOf({"1e-320", "-1.00000000000000000000000000001e-320"}), 0.0);
    EXPECT_EQ(sumOf({"1e300", "1e-320", "-1e300", "-1.00000000000000000000000000001e-320"}), 0.0);
}

// One number is just read; its rounding must be that of the C library.
TEST(DecimalSum, OneNumberIsTheDoubleNearestToIt) {
    std::mt19937_64 random(20260701);
    for (int i = 0; i < 20000; ++i) {
        char text[64];
        std::uint64_t const digits = random() >> (random() % 64);
        int const exponent = static_cast<int>(random() % 600) - 320;
        std::snprintf(text, sizeof text, "%s%llue%d", random() % 2 ? "-" : "", static_cast<unsigned long long>(digits),
                      exponent);
        double const wanted = std::strtod(text, nullptr);
        if (!std::isfinite(wanted) || (wanted == 0 && digits != 0)) {
            continue;
        }
        ASSERT_EQ(sumOf({text}), wanted) << text;
    }
}

// Integers are summed beside a 128-bit counter.
TEST(DecimalSum, SumsOfManyIntegersAreExact) {
    std::mt19937_64 random(99);
    DecimalSum sum;
    __extension__ __int128 exact = 0;
    for (int i = 0; i < 100000; ++i) {
        auto const number = static_cast<std::int64_t>(random()) >> (random() % 64);
        ASSERT_EQ(sum.add(std::to_string(number)), Outcome::Added);
        exact += number;
        if (i % 1000 == 0) {
            ASSERT_EQ(sum.value(), static_cast<double>(exact)) << i;
        }
    }
}

} // namespace
