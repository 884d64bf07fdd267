#include "backend/tables/MultiBase.h"
#include "tests/support/Laws.h"

#include <cstdint>
#include <vector>

namespace {

using Digits = std::vector<std::uint32_t>;

/// Bases that a table could have, at least one; no product of so many is as large as 2^64.
struct Place {
    Digits bases = *rc::gen::mapcat(rc::gen::inRange<std::size_t>(1, 6), [](std::size_t count) {
        return rc::gen::container<Digits>(
            count,
            rc::gen::weightedOneOf<std::uint32_t>({{1, rc::gen::inRange(1U, 10U)}, {1, rc::gen::inRange(1U, 5000U)}}));
    });
    MultiBase index{bases.begin(), bases.end()};
};

} // namespace

RC_GTEST_PROP(MultiBaseLaws, ANumberIsTheNumberOfItsDigits, ()) {
    Place const place{};
    std::uint64_t const number = *rc::gen::inRange<std::uint64_t>(0, place.index.Count());
    RC_ASSERT(place.index.Number(place.index.Digits(number)) == number);
}

RC_GTEST_PROP(MultiBaseLaws, DigitsAreTheDigitsOfTheirNumber, ()) {
    Place const place{};
    Digits digits;
    for (std::uint32_t const base : place.bases) {
        digits.push_back(*rc::gen::inRange<std::uint32_t>(0, base));
    }
    std::uint64_t const number = place.index.Number(digits);
    RC_ASSERT(number < place.index.Count());
    RC_ASSERT(place.index.Digits(number) == digits);
}

RC_GTEST_PROP(MultiBaseLaws, ALargerNumberHasLaterDigits, ()) {
    Place const place{};
    std::uint64_t const one = *rc::gen::inRange<std::uint64_t>(0, place.index.Count());
    std::uint64_t const other = *rc::gen::inRange<std::uint64_t>(0, place.index.Count());
    RC_ASSERT((one < other) == (place.index.Digits(one) < place.index.Digits(other)));
}
