// Every list of up to four bases between 0 and 4 against nested loops: the n-th turn of the innermost loop is number n.
// The outermost loop has no bound, because the first base limits nothing.

#include "backend/tables/MultiBase.h"
#include "tests/support/AssertionCatcher.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace {

using omtest::AfterReport;
using omtest::AssertionCatcher;
using omtest::FailedAssertion;
using Digits = std::vector<std::uint32_t>;

constexpr std::size_t LongestList = 4;
constexpr std::uint32_t LargestBase = 4;
constexpr std::uint64_t PastCount = 9;

std::string Show(Digits const& list) {
    std::string text = "(";
    for (std::uint32_t const entry : list) {
        text += (text.size() > 1 ? ", " : "") + std::to_string(entry);
    }
    return text + ")";
}

void ForEachList(std::size_t longest, std::uint32_t largest, std::function<void(Digits const&)> const& visit) {
    Digits list;
    std::function<void()> const extend = [&] {
        visit(list);
        if (list.size() == longest) {
            return;
        }
        for (std::uint32_t entry = 0; entry <= largest; ++entry) {
            list.push_back(entry);
            extend();
            list.pop_back();
        }
    };
    extend();
}

/// The digit lists of the numbers 0, 1, 2 ... in the order of nested loops, until `enough` of them are there.
/// REQUIRES: at least one base, and none of 0 behind the first.
std::vector<Digits> NestedLoops(Digits const& bases, std::uint64_t enough) {
    std::vector<Digits> turns;
    Digits counters(bases.size(), 0);
    std::function<void(std::size_t)> const loop = [&](std::size_t position) {
        if (position == bases.size()) {
            turns.push_back(counters);
            return;
        }
        for (counters[position] = 0; counters[position] < bases[position]; ++counters[position]) {
            loop(position + 1);
        }
    };
    for (counters[0] = 0; turns.size() < enough; ++counters[0]) {
        loop(1);
    }
    return turns;
}

std::uint64_t ProductOf(Digits const& bases) {
    std::uint64_t product = 1;
    for (std::uint32_t const base : bases) {
        product *= base;
    }
    return product;
}

/// How many bases stand behind the last zero base that is not the first one; all but none when there is none.
std::size_t BasesBehindLastZero(Digits const& bases) {
    std::size_t behind = 0;
    while (behind + 1 < bases.size() && bases[bases.size() - 1 - behind] != 0) {
        ++behind;
    }
    return behind + 1 < bases.size() ? behind : bases.size();
}

void CheckWithoutZeros(Digits const& bases) {
    MultiBase const index(bases.begin(), bases.end());
    std::uint64_t const enough = ProductOf(bases) + PastCount;
    std::vector<Digits> const turns = NestedLoops(bases, enough);
    for (std::uint64_t n = 0; n < enough; ++n) {
        ASSERT_EQ(index.Digits(n), turns[n]) << "number " << n;
        ASSERT_EQ(index.Number(turns[n]), n);
    }
}

// Numbers that the bases behind the zero use up never meet it; all others do.
void CheckWithZeros(Digits const& bases, std::size_t behind) {
    MultiBase const index(bases.begin(), bases.end());
    Digits tail(bases.end() - static_cast<std::ptrdiff_t>(behind), bases.end());
    std::uint64_t const harmless = ProductOf(tail);
    tail.insert(tail.begin(), 1);
    std::vector<Digits> const turns = NestedLoops(tail, harmless);
    for (std::uint64_t n = 0; n < harmless + PastCount; ++n) {
        AssertionCatcher caught(AfterReport::Throw);
        if (n >= harmless) {
            ASSERT_THROW(index.Digits(n), FailedAssertion) << "number " << n;
            ASSERT_EQ(caught.Reports(), std::vector<std::string>{"backend/tables/MultiBase:126: b>0"});
            continue;
        }
        Digits expected(bases.size() - tail.size(), 0);
        expected.insert(expected.end(), turns[n].begin(), turns[n].end());
        ASSERT_EQ(index.Digits(n), expected) << "number " << n;
    }
}

} // namespace

TEST(MultiBaseExhaustive, CountIsTheProduct) {
    ForEachList(LongestList, LargestBase, [](Digits const& bases) {
        EXPECT_EQ(MultiBase(bases.begin(), bases.end()).Count(), ProductOf(bases)) << Show(bases);
    });
}

TEST(MultiBaseExhaustive, DigitsAndNumberAgreeWithNestedLoops) {
    int lists = 0;
    ForEachList(LongestList, LargestBase, [&](Digits const& bases) {
        if (bases.empty() || HasFatalFailure()) {
            return;
        }
        SCOPED_TRACE(Show(bases));
        std::size_t const behind = BasesBehindLastZero(bases);
        if (behind == bases.size()) {
            CheckWithoutZeros(bases);
        } else {
            CheckWithZeros(bases, behind);
        }
        ++lists;
    });
    EXPECT_EQ(lists, 5 + 25 + 125 + 625);
}

// Digits need not stay below their bases for this direction.
TEST(MultiBaseExhaustive, NumberWeighsEachDigitByTheBasesBehindIt) {
    AssertionCatcher caught(AfterReport::Return);
    ForEachList(3, LargestBase, [](Digits const& bases) {
        MultiBase const index(bases.begin(), bases.end());
        ForEachList(3, LargestBase, [&](Digits const& digits) {
            if (digits.size() != bases.size()) {
                return;
            }
            std::uint64_t sum = 0;
            for (std::size_t k = 0; k < digits.size(); ++k) {
                sum += digits[k] * ProductOf(Digits(bases.begin() + static_cast<std::ptrdiff_t>(k) + 1, bases.end()));
            }
            EXPECT_EQ(index.Number(digits), sum) << Show(bases) << " " << Show(digits);
        });
    });
    EXPECT_TRUE(caught.Failures().empty());
}

TEST(MultiBaseExhaustive, NumberFailsForEveryOtherLengthAndGivesTheNumberSoFar) {
    ForEachList(3, 3, [](Digits const& bases) {
        ForEachList(4, 2, [&](Digits const& digits) {
            if (digits.empty() || digits.size() == bases.size()) {
                return;
            }
            std::size_t const common = std::max<std::size_t>(1, std::min(bases.size(), digits.size()));
            std::uint64_t soFar = digits[0];
            for (std::size_t k = 1; k < common; ++k) {
                soFar = soFar * bases[k] + digits[k];
            }
            AssertionCatcher caught(AfterReport::Return);
            EXPECT_EQ(MultiBase(bases.begin(), bases.end()).Number(digits), soFar) << Show(bases) << Show(digits);
            EXPECT_EQ(caught.Reports(),
                      std::vector<std::string>{"backend/tables/MultiBase:148: digit == end && i == size"})
                << Show(bases) << Show(digits);
        });
    });
}
