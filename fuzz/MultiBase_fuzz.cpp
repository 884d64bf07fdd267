// The mixed-radix index against arithmetic in 128 bits, and against an odometer that counts through the digits.

#include "FuzzTarget.h"
#include "Require.h"
#include "Script.h"
#include "backend/tables/MultiBase.h"
#include "tests/support/AssertionCatcher.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace {

using omfuzz::Require;
using omtest::AfterReport;
using omtest::AssertionCatcher;
using omtest::FailedAssertion;
using Digits = std::vector<std::uint32_t>;

constexpr std::size_t MostBases = 12;
constexpr int MostTurns = 300;

__extension__ using Wide = unsigned __int128;

std::uint32_t AnyNumber(omfuzz::ByteDice& dice) {
    switch (dice.Below(4)) {
    case 0:
        return static_cast<std::uint32_t>(dice.Below(4));
    case 1:
    case 2:
        return static_cast<std::uint32_t>(dice.Below(256));
    default:
        return static_cast<std::uint32_t>(dice.Below(std::size_t(1) << 32));
    }
}

/// Keeps the low 64 bits, as the index does.
std::uint64_t Narrow(Wide wide) { return static_cast<std::uint64_t>(wide); }

std::uint64_t ProductFrom(Digits const& bases, std::size_t first) {
    Wide product = 1;
    for (std::size_t k = first; k < bases.size(); ++k) {
        product = Narrow(product * bases[k]);
    }
    return Narrow(product);
}

/// What is left of a number when it comes to each digit, the last one first. Ends at the number that is 0 or comes to
/// the first digit, or where there is no base to divide by: `stuck` is set then.
Digits Split(Digits const& bases, std::uint64_t number, std::uint64_t& first, bool& stuck) {
    Digits digits(bases.size(), 0);
    for (std::size_t k = bases.size(); k > 1 && number > 0; --k) {
        if (bases[k - 1] == 0) {
            stuck = true;
            return digits;
        }
        digits[k - 1] = static_cast<std::uint32_t>(number - number / bases[k - 1] * bases[k - 1]);
        number /= bases[k - 1];
    }
    first = bases.empty() ? 0 : number;
    if (!bases.empty()) {
        digits[0] = static_cast<std::uint32_t>(number);
    }
    return digits;
}

void CheckNumber(MultiBase const& index, Digits const& bases, std::uint64_t number) {
    std::uint64_t first = 0;
    bool stuck = false;
    Digits const expected = Split(bases, number, first, stuck);
    AssertionCatcher const caught(AfterReport::Throw);
    try {
        Require(index.Digits(number) == expected && !stuck, "the digits");
    } catch (FailedAssertion const&) {
        Require(stuck && caught.Failures().size() == 1, "digits fail where a base of 0 would divide");
        return;
    }
    Digits given(bases.size(), 7);
    Require(index.Digits(number, given.data()) == first && given == expected, "the digits in the caller's storage");
    if (first <= 0xFFFFFFFF && !bases.empty()) {
        Require(index.Number(expected) == number, "digits and back");
    }
}

/// Counts as nested loops do, from some number on.
void CheckTurns(MultiBase const& index, Digits const& bases, std::uint64_t number, int turns) {
    std::uint64_t first = 0;
    bool stuck = false;
    Digits odometer = Split(bases, number, first, stuck);
    for (std::size_t k = 1; k < bases.size(); ++k) {
        stuck = stuck || bases[k] == 0;
    }
    if (stuck || bases.empty() || first > 0xFFFF0000 || number > ~std::uint64_t(0) - 1000) {
        return;
    }
    for (int turn = 0; turn < turns; ++turn, ++number) {
        Require(index.Digits(number) == odometer, "the next turn of the innermost loop is the next number");
        Require(index.Number(odometer) == number, "the number of a turn");
        std::size_t k = bases.size() - 1;
        for (++odometer[k]; k > 0 && odometer[k] == bases[k]; ++odometer[k]) {
            odometer[k--] = 0;
        }
    }
}

/// Any digits, not only those below their bases.
void CheckWeights(MultiBase const& index, Digits const& bases, Digits const& digits) {
    AssertionCatcher const caught(AfterReport::Return);
    std::uint64_t const number = index.Number(digits);
    bool const rightLength = digits.size() == bases.size();
    Require(caught.Failures().empty() == rightLength, "another number of digits is reported");
    if (rightLength) {
        Wide sum = 0;
        for (std::size_t k = 0; k < digits.size(); ++k) {
            sum += static_cast<Wide>(digits[k]) * ProductFrom(bases, k + 1);
        }
        Require(number == Narrow(sum), "each digit weighs the product of the bases behind it");
    }
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    omfuzz::ByteDice dice(data, size);
    Digits bases(dice.Below(MostBases + 1));
    for (std::uint32_t& base : bases) {
        base = AnyNumber(dice);
    }
    MultiBase const index(bases.begin(), bases.end());
    Require(index.Bases() == bases, "the bases");
    Require(index.Count() == ProductFrom(bases, 0), "the count is the product");
    Require(MultiBase(index) == index && (index != MultiBase()) == !bases.empty(), "equality");
    while (!dice.Spent()) {
        std::uint64_t const number = dice.Percent(50) ? AnyNumber(dice) : dice.Below(~std::size_t(0));
        CheckNumber(index, bases, number);
        CheckTurns(index, bases, number, dice.Int(0, MostTurns));
        Digits digits(dice.Percent(80) && !bases.empty() ? bases.size() : 1 + dice.Below(MostBases));
        for (std::uint32_t& digit : digits) {
            digit = AnyNumber(dice);
        }
        CheckWeights(index, bases, digits);
    }
    return 0;
}
